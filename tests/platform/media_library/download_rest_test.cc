// SPDX-License-Identifier: Apache-2.0
// Downloads that are made to wait, without any media.
#include "platform/mediamgmnt/download_rest.h"

#include <gtest/gtest.h>
#include <libsoup/soup.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <condition_variable>
#include <functional>
#include <mutex>
#include <optional>
#include <thread>

namespace mediamgmnt {
namespace {

using std::chrono::milliseconds;
using std::chrono::steady_clock;

constexpr std::chrono::seconds kPatience{30};
constexpr milliseconds kShortOfARest{10};  ///< half of what one lasts at most
constexpr int kTries = 50;                 ///< for a moment in which the machine lets a test run through

/// Something that happens once, and can be waited for.
class Mark {
 public:
  void set() {
    {
      const std::lock_guard lock(m_mutex);
      m_set = true;
    }
    m_changed.notify_all();
  }
  bool isSet() {
    const std::lock_guard lock(m_mutex);
    return m_set;
  }
  bool wait() {
    std::unique_lock lock(m_mutex);
    return m_changed.wait_for(lock, kPatience, [this] { return m_set; });
  }

 private:
  std::mutex m_mutex;
  std::condition_variable m_changed;
  bool m_set = false;
};

/// A thread that fetches, as an adaptive demuxer has one.
class Downloader {
 public:
  Downloader() : m_thread([this] { run(); }) {
    fetch();
    EXPECT_TRUE(m_answered.wait());
  }
  ~Downloader() {
    end();
    g_object_unref(m_session);
    g_main_loop_unref(m_loop);
    g_main_context_unref(m_context);
  }
  Downloader(const Downloader&) = delete;
  Downloader& operator=(const Downloader&) = delete;

  /// The session stays, as it does in an element that was stopped and lives on.
  void end() {
    if (!m_thread.joinable()) return;
    post([this] { g_main_loop_quit(m_loop); });
    m_thread.join();
  }

  /// Runs @p task on the thread, with the priority of an answer or of a request.
  void post(std::function<void()> task, int priority = G_PRIORITY_DEFAULT) {
    const auto run = +[](gpointer data) -> gboolean {
      (*static_cast<std::function<void()>*>(data))();
      return G_SOURCE_REMOVE;
    };
    const auto drop = +[](gpointer data) { delete static_cast<std::function<void()>*>(data); };
    GSource* const source = g_idle_source_new();
    g_source_set_priority(source, priority);
    g_source_set_callback(source, run, new std::function<void()>(std::move(task)), drop);
    g_source_attach(source, m_context);
    g_source_unref(source);
  }

 private:
  static SoupSession* makeSession(GMainContext* context) {
    g_main_context_push_thread_default(context);
    SoupSession* const session = soup_session_new();
    g_main_context_pop_thread_default(context);
    return session;
  }

  void run() {
    g_main_context_push_thread_default(m_context);
    g_main_loop_run(m_loop);
    g_main_context_pop_thread_default(m_context);
  }

  /// Nobody listens on that port: the answer is an error, and what counts is that it was asked.
  void fetch() {
    post([this] {
      SoupMessage* const message = soup_message_new("GET", "http://127.0.0.1:1/");
      const auto answered = +[](GObject* session, GAsyncResult* result, gpointer self) {
        GError* error = nullptr;
        GInputStream* const body = soup_session_send_finish(SOUP_SESSION(session), result, &error);
        g_clear_error(&error);
        if (body != nullptr) g_object_unref(body);
        static_cast<Downloader*>(self)->m_answered.set();
      };
      soup_session_send_async(m_session, message, G_PRIORITY_DEFAULT, nullptr, answered, this);
      g_object_unref(message);
    });
  }

  GMainContext* const m_context = g_main_context_new();
  GMainLoop* const m_loop = g_main_loop_new(m_context, FALSE);
  SoupSession* const m_session = makeSession(m_context);
  Mark m_answered;
  std::thread m_thread;
};

class DownloadRestTest : public ::testing::Test {
 protected:
  DownloadRestTest() { DownloadRest::watchThreads(); }
};

TEST_F(DownloadRestTest, AThreadDoesNothingUntilTheRestIsOver) {
  Downloader downloader;
  for (int i = 0; i < kTries; ++i) {
    std::atomic<int> ran = 0;
    Mark last;
    const auto begin = steady_clock::now();
    auto rest = std::make_optional<DownloadRest>();
    while (steady_clock::now() - begin < kShortOfARest / 2) downloader.post([&] { ++ran; });
    downloader.post([&] { last.set(); });
    const int ranMeanwhile = ran;
    const bool inTime = steady_clock::now() - begin < kShortOfARest;
    rest.reset();
    ASSERT_TRUE(last.wait());
    EXPECT_GT(ran, 0);
    if (!inTime) continue;
    EXPECT_EQ(ranMeanwhile, 0);
    return;
  }
  FAIL() << "the machine was too busy " << kTries << " times";
}

TEST_F(DownloadRestTest, WhatWasQueuedIsTakenUpAndWhatWasAnsweredIsHandedOverFirst) {
  Downloader downloader;
  for (int i = 0; i < kTries; ++i) {
    Mark takenUp;
    Mark handedOver;
    const auto begin = steady_clock::now();
    downloader.post([&] { takenUp.set(); }, G_PRIORITY_DEFAULT_IDLE);
    downloader.post([&] { handedOver.set(); });
    const bool both = [&] {
      const DownloadRest rest;
      return takenUp.isSet() && handedOver.isSet();
    }();
    const bool inTime = steady_clock::now() - begin < milliseconds(100);
    ASSERT_TRUE(takenUp.wait() && handedOver.wait());
    if (!inTime) continue;
    EXPECT_TRUE(both);
    return;
  }
  FAIL() << "the machine was too busy " << kTries << " times";
}

TEST_F(DownloadRestTest, EndsByItselfForThoseWhoFetchMeanwhile) {
  Downloader downloader;
  Mark fetched;
  const DownloadRest rest;
  downloader.post([&] { fetched.set(); });
  EXPECT_TRUE(fetched.wait());
}

TEST_F(DownloadRestTest, AThreadThatHasEndedIsNotWaitedFor) {
  Downloader downloader;
  downloader.end();
  auto shortest = steady_clock::duration::max();
  for (int i = 0; i < 10; ++i) {
    const auto begin = steady_clock::now();
    const DownloadRest rest;
    shortest = std::min(shortest, steady_clock::now() - begin);
  }
  EXPECT_LT(shortest, milliseconds(100));
}

TEST_F(DownloadRestTest, ASessionThatHasGoneIsForgotten) {
  { const Downloader downloader; }
  const DownloadRest rest;  // touches nothing that has gone
}

}  // namespace
}  // namespace mediamgmnt
