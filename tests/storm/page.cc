// SPDX-License-Identifier: Apache-2.0
#include "tests/storm/page.h"

#include <thread>

namespace storm {
namespace {

constexpr char kDocument[] = "http://page.example/app/index.html";

}  // namespace

Page::Page() : m_events([this] { wake(); }) {}

Page::~Page() {
  if (hasElement()) {
    destroy();
  }
}

AVControlPlugin& Page::create() {
  m_element = AVControlPlugin::create();
  m_last = m_element;
  m_element->setDocumentUrl(kDocument, sizeof(kDocument) - 1);
  return *m_element;
}

void Page::destroy() {
  m_element->willBeDestroyed();
  m_element.reset();
}

bool Page::waitUntilReleased(std::chrono::seconds limit) {
  const auto deadline = std::chrono::steady_clock::now() + limit;
  while (!m_last.expired()) {  // a release has nothing to wait on; callbacks and the renew thread hold it for moments
    if (std::chrono::steady_clock::now() > deadline) {
      return false;
    }
    std::this_thread::yield();
  }
  AVControlPlugin::getPlugin(0);  // passes through the registry's lock, as the last releasing thread has
  return true;
}

int Page::runQueued() {
  int count = 0;
  m_events.drain([this, &count](CorvelNativePluginBase& object, const pluginhost::Event& event) {
    ++count;
    if (m_handler && &object == m_element.get()) {
      m_handler(*m_element, event);
    }
  });
  return count;
}

bool Page::runUntil(const std::function<bool()>& done, std::chrono::seconds limit) {
  const auto deadline = std::chrono::steady_clock::now() + limit;
  while (!done()) {
    {
      std::unique_lock<std::mutex> lock(m_mutex);
      if (!m_woken.wait_until(lock, deadline, [this] { return m_wakeUp; })) {
        return false;
      }
      m_wakeUp = false;
    }
    runQueued();
  }
  return true;
}

bool Page::setData(AVControlPlugin& element, const std::string& url) {
  return element.JS_SetDataProp(url.c_str(), static_cast<unsigned int>(url.size()));
}

bool Page::queue(AVControlPlugin& element, const std::string& url) {
  return element.JS_Queue(url.c_str(), static_cast<unsigned int>(url.size()));
}

void Page::wake() {
  {
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_wakeUp = true;
  }
  m_woken.notify_all();
}

}  // namespace storm
