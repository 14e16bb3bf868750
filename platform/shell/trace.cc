// SPDX-License-Identifier: Apache-2.0
#include "platform/shell/trace.h"

#include <cerrno>
#include <cstdio>
#include <mutex>
#include <system_error>
#include <utility>

#include "platform/pluginhost/shell.h"
#include "platform/shell/media_seam.h"
#include "platform/shell/trace_line.h"

namespace shell {

/// Keys: "object" is the native object's number, "player" the media library's handle.
class Trace::Writer : public pluginhost::Observer, public SeamObserver {
 public:
  explicit Writer(std::FILE* file) : m_file(file) {}
  Writer(const Writer&) = delete;
  Writer& operator=(const Writer&) = delete;
  ~Writer() override { close(); }

  /// Nothing is written any more. @return the system's number of the first failure, or 0.
  int close() {
    const std::lock_guard lock(m_mutex);
    if (m_file != nullptr && std::fclose(std::exchange(m_file, nullptr)) != 0) rememberFailure();
    return m_failure;
  }

  void propertyChanged(std::uint64_t objectId, std::string_view name, const _CorvelNativeVariant& value) override {
    write(TraceLine("property-change", name).number("object", objectId).values("arguments", &value, 1).null("result"));
  }

  void eventRaised(std::uint64_t objectId, std::string_view name, const _CorvelNativeVariant* args, unsigned int count) override {
    write(TraceLine("event", name).number("object", objectId).values("arguments", args, count).null("result"));
  }

  void propertyRead(std::uint64_t objectId, std::string_view name, bool ok, const _CorvelNativeVariant& value) override {
    TraceLine line("script-read", name);
    line.number("object", objectId).values("arguments", nullptr, 0).boolean("ok", ok);
    write(ok ? line.value("result", value) : line.null("result"));
  }

  void propertyWritten(std::uint64_t objectId, std::string_view name, const _CorvelNativeVariant& value, bool ok) override {
    write(TraceLine("script-write", name).number("object", objectId).values("arguments", &value, 1).boolean("result", ok));
  }

  void methodCalled(std::uint64_t objectId, std::string_view name, const _CorvelNativeVariant* args, unsigned int argc, bool ok,
                    const _CorvelNativeVariant& result) override {
    TraceLine line("script-call", name);
    line.number("object", objectId).values("arguments", args, argc).boolean("ok", ok);
    write(ok ? line.value("result", result) : line.null("result"));
  }

  void mediaCall(unsigned long handle, std::string_view kind, std::string_view name, const char* argument, bool ok,
                 const char* result) override {
    TraceLine line(kind, name);
    line.number("player", handle).argument("arguments", argument);
    if (result == nullptr) {
      write(line.boolean("result", ok));
    } else {
      write(line.text("result", result));
    }
  }

  void mediaCallback(unsigned long handle, std::string_view kind, std::string_view name) override {
    write(TraceLine(kind, name).number("player", handle).argument("arguments", nullptr).null("result"));
  }

 private:
  void write(TraceLine& line) {
    const std::string& text = line.finish();
    const std::lock_guard lock(m_mutex);
    if (m_file == nullptr) return;
    std::fwrite(text.data(), 1, text.size(), m_file);
    if (std::ferror(m_file) != 0) rememberFailure();  // what is left in the buffer counts as written
  }

  void rememberFailure() {
    if (m_failure == 0) m_failure = errno;
  }

  std::mutex m_mutex;
  std::FILE* m_file;  // guarded by m_mutex; null: closed
  int m_failure = 0;  // guarded by m_mutex
};

std::unique_ptr<Trace> Trace::open(const std::string& path, std::string& error) {
  std::FILE* file = std::fopen(path.c_str(), "we");
  if (file == nullptr) {
    error = "cannot write the trace file " + path + ": " + std::generic_category().message(errno);
    return nullptr;
  }
  std::setvbuf(file, nullptr, _IOLBF, 1 << 16);  // whole lines reach the file even when the process dies
  return std::unique_ptr<Trace>(new Trace(std::make_unique<Writer>(file), path));
}

Trace::Trace(std::unique_ptr<Writer> writer, std::string path) : m_writer(std::move(writer)), m_path(std::move(path)) {
  pluginhost::setObserver(m_writer.get());
  setSeamObserver(m_writer.get());
}

Trace::~Trace() {
  setSeamObserver(nullptr);
  pluginhost::setObserver(nullptr);
}

bool Trace::finish(std::string& error) {
  const int failure = m_writer->close();
  if (failure != 0) error = "the trace file " + m_path + " is not whole: " + std::generic_category().message(failure);
  return failure == 0;
}

}  // namespace shell
