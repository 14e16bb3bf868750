// SPDX-License-Identifier: Apache-2.0
#include "platform/mediamgmnt/http_fetch.h"

#include <libsoup/soup.h>

#include <array>
#include <mutex>
#include <utility>
#include <vector>

#include "platform/mediamgmnt/library_start.h"
#include "platform/mediamgmnt/thread_ledger.h"
#include "platform/mediamgmnt/web_address.h"

namespace mediamgmnt {
namespace {

/// Of one read or write; whoever waits for the document has a limit of its own for the whole.
constexpr int kSilenceSeconds = 10;
constexpr std::size_t kReadBytes = 16 * 1024;

template <typename T>
using Owned = std::unique_ptr<T, void (*)(gpointer)>;

template <typename T>
Owned<T> own(T* object) {
  return {object, g_object_unref};
}

FetchReply failed(Failure failure, std::string problem) {
  FetchReply reply;
  reply.failure = failure;
  reply.problem = std::move(problem);
  return reply;
}

/// Takes @p error over.
FetchReply failedBy(GError* error, Failure failure) {
  const std::string problem = error != nullptr ? error->message : "";
  g_clear_error(&error);
  return failed(failure, problem);
}

Failure failureOfStatus(guint status) {
  return status >= 400 && status < 500 ? Failure::ContentNotAvailable : Failure::CannotConnect;
}

/// GNOME's HTTP library binds a session to the thread-default context of the thread that makes it.
class ThreadContext {
 public:
  ThreadContext() : m_context(g_main_context_new()) { g_main_context_push_thread_default(m_context); }
  ThreadContext(const ThreadContext&) = delete;
  ThreadContext& operator=(const ThreadContext&) = delete;
  ~ThreadContext() {
    while (g_main_context_iteration(m_context, FALSE)) {
    }  // what the session left to be tidied up
    g_main_context_pop_thread_default(m_context);
    g_main_context_unref(m_context);
  }

 private:
  GMainContext* m_context;
};

}  // namespace

void prepareFetching() {
  const ThreadContext context;
  const std::array types = {
      SOUP_TYPE_MESSAGE,      G_TYPE_SOCKET,       G_TYPE_SOCKET_CLIENT,       G_TYPE_SOCKET_CONNECTION, G_TYPE_TCP_CONNECTION,
      G_TYPE_NETWORK_ADDRESS, G_TYPE_INET_ADDRESS, G_TYPE_INET_SOCKET_ADDRESS, G_TYPE_CANCELLABLE,       G_TYPE_TASK};
  for (const GType type : types) g_type_class_unref(g_type_class_ref(type));
  g_tls_backend_get_default();
  g_proxy_resolver_get_default();
  g_object_unref(g_resolver_get_default());
  g_object_unref(soup_session_new());
}

/// Shared by the owner and the transfer's thread; whoever ends last frees it.
class HttpFetch::Transfer {
 public:
  Transfer(TaskLoop& loop, FetchRequest request, Done done)
      : m_request(std::move(request)), m_cancel(own(g_cancellable_new())), m_loop(&loop), m_done(std::move(done)) {}

  void abandon() {
    {
      std::lock_guard lock(m_mutex);
      m_loop = nullptr;
    }
    g_cancellable_cancel(m_cancel.get());
  }

  void run(const std::shared_ptr<Transfer>& self) {
    FetchReply reply =
        waitForLibraryStart() ? fetch() : failed(Failure::InsufficientResources, "the media library has not started");
    std::lock_guard lock(m_mutex);
    if (m_loop == nullptr) return;
    m_loop->post([self, reply = std::move(reply)] {
      if (self->isWanted()) self->m_done(reply);
    });
  }

 private:
  bool isWanted() {
    std::lock_guard lock(m_mutex);
    return m_loop != nullptr;
  }

  FetchReply fetch() {
    if (!namesHost(m_request.url)) return failed(Failure::CannotConnect, "its address names no host");
    const ThreadContext context;
    const auto session = own(soup_session_new_with_options("timeout", kSilenceSeconds, nullptr));
    if (!m_request.userAgent.empty()) g_object_set(session.get(), "user-agent", m_request.userAgent.c_str(), nullptr);
    const bool posts = !m_request.jsonBody.empty();
    SoupMessage* const made = soup_message_new(posts ? "POST" : "GET", m_request.url.c_str());
    if (made == nullptr) return failed(Failure::FormatNotSupported, "its address is none");
    const auto message = own(made);
    if (posts) attachBody(*message);
    GError* error = nullptr;
    GInputStream* const stream = soup_session_send(session.get(), message.get(), m_cancel.get(), &error);
    if (stream == nullptr) return failedBy(error, Failure::CannotConnect);
    const auto kept = own(stream);
    const guint status = soup_message_get_status(message.get());
    if (status < 200 || status > 299) return failed(failureOfStatus(status), "the server answered " + std::to_string(status));
    FetchReply reply = readBody(*stream);
    char* const url = g_uri_to_string(soup_message_get_uri(message.get()));
    reply.url = url;
    g_free(url);
    return reply;
  }

  void attachBody(SoupMessage& message) const {
    GBytes* const bytes = g_bytes_new(m_request.jsonBody.data(), m_request.jsonBody.size());
    soup_message_set_request_body_from_bytes(&message, "application/json", bytes);
    g_bytes_unref(bytes);
  }

  FetchReply readBody(GInputStream& stream) const {
    FetchReply reply;
    std::vector<char> part(kReadBytes);
    for (;;) {
      GError* error = nullptr;
      const gssize count = g_input_stream_read(&stream, part.data(), part.size(), m_cancel.get(), &error);
      if (count < 0) return failedBy(error, Failure::ConnectionLost);
      if (count == 0) return reply;
      reply.body.append(part.data(), static_cast<std::size_t>(count));
      if (reply.body.size() > m_request.largest) {
        return failed(Failure::CorruptContent, "it is larger than " + std::to_string(m_request.largest / 1024) + " KiB");
      }
    }
  }

  const FetchRequest m_request;
  const Owned<GCancellable> m_cancel;
  std::mutex m_mutex;
  TaskLoop* m_loop;  // guarded by m_mutex; null once nobody wants the reply
  const Done m_done;
};

HttpFetch::HttpFetch(TaskLoop& loop, FetchRequest request, Done done)
    : m_transfer(std::make_shared<Transfer>(loop, std::move(request), std::move(done))) {
  startListedThread(kLibraryThreads, [transfer = m_transfer] { transfer->run(transfer); });
}

HttpFetch::~HttpFetch() { m_transfer->abandon(); }

}  // namespace mediamgmnt
