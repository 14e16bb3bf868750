// SPDX-License-Identifier: Apache-2.0
// A thread that fetches over HTTP, as GStreamer's elements have one, without any media.
#pragma once

#include <gtest/gtest.h>
#include <libsoup/soup.h>

#include <chrono>
#include <functional>
#include <thread>
#include <utility>

#include "tests/platform/media_library/mark.h"

namespace mediamgmnt {

/// A thread that fetches, as an adaptive demuxer has one.
class Downloader {
 public:
  /// @p source is what listens to its request, as a source element does.
  explicit Downloader(gpointer source = nullptr) : m_thread([this] { run(); }) {
    fetch(source);
    EXPECT_TRUE(m_answered.wait());
  }
  ~Downloader() {
    end();
    g_object_unref(m_message);
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
  void fetch(gpointer source) {
    if (source != nullptr) g_signal_connect(m_message, "restarted", G_CALLBACK(+[](SoupMessage*, gpointer) {}), source);
    post([this] {
      const auto answered = +[](GObject* session, GAsyncResult* result, gpointer self) {
        GError* error = nullptr;
        GInputStream* const body = soup_session_send_finish(SOUP_SESSION(session), result, &error);
        g_clear_error(&error);
        if (body != nullptr) g_object_unref(body);
        static_cast<Downloader*>(self)->m_answered.set();
      };
      soup_session_send_async(m_session, m_message, G_PRIORITY_DEFAULT, nullptr, answered, this);
    });
  }

  GMainContext* const m_context = g_main_context_new();
  GMainLoop* const m_loop = g_main_loop_new(m_context, FALSE);
  SoupSession* const m_session = makeSession(m_context);
  SoupMessage* const m_message = soup_message_new("GET", "http://127.0.0.1:1/");
  Mark m_answered;
  std::thread m_thread;
};

}  // namespace mediamgmnt
