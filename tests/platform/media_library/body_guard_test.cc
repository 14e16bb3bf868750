// SPDX-License-Identifier: Apache-2.0
// Answers that come as their requests are cancelled, without any media.
#include "platform/mediamgmnt/body_guard.h"

#include <gtest/gtest.h>
#include <libsoup/soup.h>

#include <atomic>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <thread>

namespace mediamgmnt {
namespace {

constexpr std::string_view kText = "an answer";
constexpr int kRequests = 500;  ///< without the guard, one in a few dozens ends the process

constexpr int kConnections = 10;  ///< that a session has in all
constexpr guint kPatienceSeconds = 10;

template <typename T>
std::shared_ptr<T> own(T* object) {
  return {object, g_object_unref};
}

/// A context of its own for what is made while it lives.
class Context {
 public:
  Context() { g_main_context_push_thread_default(m_context.get()); }
  ~Context() {
    while (g_main_context_iteration(m_context.get(), FALSE)) {
    }
    g_main_context_pop_thread_default(m_context.get());
  }
  Context(const Context&) = delete;
  Context& operator=(const Context&) = delete;

  void iterate() { g_main_context_iteration(m_context.get(), TRUE); }
  void runUntil(const std::function<bool()>& over) {
    bool late = false;
    GSource* const patience = g_timeout_source_new_seconds(kPatienceSeconds);
    const auto giveUp = +[](gpointer late) -> gboolean { return *static_cast<bool*>(late) = true; };
    g_source_set_callback(patience, giveUp, &late, nullptr);
    g_source_attach(patience, m_context.get());
    while (!over() && !late) iterate();
    g_source_destroy(patience);
    g_source_unref(patience);
    EXPECT_FALSE(late) << "waited in vain";
  }
  /// What wakes its thread may keep it for longer.
  std::shared_ptr<GMainContext> handle() const { return m_context; }

 private:
  const std::shared_ptr<GMainContext> m_context{g_main_context_new(), g_main_context_unref};
};

/// Answers on a thread of its own.
class Server {
 public:
  Server() : m_thread([this] { run(); }) { m_url.wait(nullptr); }
  ~Server() {
    m_over = true;
    g_main_context_wakeup(m_context.get());
    m_thread.join();
  }
  Server(const Server&) = delete;
  Server& operator=(const Server&) = delete;

  const char* url() const { return m_url.load()->c_str(); }

 private:
  void run() {
    Context context;
    m_context = context.handle();
    const auto server = own(soup_server_new(nullptr, nullptr));
    const auto answer = +[](SoupServer*, SoupServerMessage* message, const char*, GHashTable*, gpointer) {
      soup_server_message_set_status(message, SOUP_STATUS_OK, nullptr);
      soup_server_message_set_response(message, "text/plain", SOUP_MEMORY_STATIC, kText.data(), kText.size());
    };
    soup_server_add_handler(server.get(), nullptr, answer, nullptr, nullptr);
    EXPECT_TRUE(soup_server_listen_local(server.get(), 0, SOUP_SERVER_LISTEN_IPV4_ONLY, nullptr));
    GSList* const uris = soup_server_get_uris(server.get());
    char* const text = g_uri_to_string(static_cast<GUri*>(uris->data));
    const std::string url = text;
    g_free(text);
    g_slist_free_full(
        uris, +[](gpointer uri) { g_uri_unref(static_cast<GUri*>(uri)); });
    m_url = &url;
    m_url.notify_all();
    while (!m_over) context.iterate();
  }

  std::atomic<bool> m_over = false;
  std::shared_ptr<GMainContext> m_context;
  std::atomic<const std::string*> m_url = nullptr;
  std::thread m_thread;
};

/// One request, which another thread may cancel when the headers of its answer have come.
class Request {
 public:
  Request(Context& context, SoupSession* session) : m_context(context), m_session(session) {}

  void sendAndCancel(const char* url) {
    std::thread canceller([this] {
      m_answered.wait(false);
      g_cancellable_cancel(m_cancellable.get());
    });
    send(url);
    canceller.join();
  }

  /// @return the text of the answer, as far as it came.
  std::string send(const char* url) { return send(own(soup_message_new("GET", url))); }
  std::string send(const std::shared_ptr<SoupMessage>& message) {
    const auto answered = +[](SoupMessage*, gpointer self) {
      static_cast<Request*>(self)->m_answered = true;
      static_cast<Request*>(self)->m_answered.notify_all();
    };
    const auto finished = +[](SoupMessage*, gpointer self) { static_cast<Request*>(self)->m_finished = true; };
    g_signal_connect(message.get(), "got-headers", G_CALLBACK(answered), this);
    g_signal_connect(message.get(), "finished", G_CALLBACK(finished), this);
    soup_session_send_async(m_session, message.get(), G_PRIORITY_DEFAULT, m_cancellable.get(), &Request::onEnd, this);
    m_context.runUntil([this] { return m_ended && m_finished; });
    g_signal_handlers_disconnect_by_data(message.get(), this);
    return m_text;
  }

 private:
  static void onEnd(GObject* session, GAsyncResult* result, gpointer data) {
    auto* const self = static_cast<Request*>(data);
    GInputStream* const body = soup_session_send_finish(SOUP_SESSION(session), result, nullptr);
    if (body != nullptr) {
      char text[64];
      gsize size = 0;
      g_input_stream_read_all(body, text, sizeof text, &size, nullptr, nullptr);
      self->m_text.assign(text, size);
      g_object_unref(body);
    }
    self->m_ended = true;
  }

  Context& m_context;
  SoupSession* const m_session;
  const std::shared_ptr<GCancellable> m_cancellable = own(g_cancellable_new());
  std::atomic<bool> m_answered = false;
  bool m_ended = false;
  bool m_finished = false;
  std::string m_text;
};

TEST(BodyGuardTest, RequestsThatAreCancelledAsTheirAnswersComeLeaveTheSessionUsable) {
  guardCancelledBodies();
  const Server server;
  Context context;
  const auto session = own(soup_session_new());
  for (int i = 0; i < kRequests; ++i) Request(context, session.get()).sendAndCancel(server.url());
  EXPECT_EQ(Request(context, session.get()).send(server.url()), kText);
}

TEST(BodyGuardTest, AMessageThatIsSentAgainGivesItsConnectionBackEachTime) {
  guardCancelledBodies();
  const Server server;
  Context context;
  const auto session = own(soup_session_new());
  const auto message = own(soup_message_new("GET", server.url()));
  for (int i = 0; i < kConnections + 2; ++i) ASSERT_EQ(Request(context, session.get()).send(message), kText) << i;
}

}  // namespace
}  // namespace mediamgmnt
