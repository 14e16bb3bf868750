// SPDX-License-Identifier: Apache-2.0
#include "statemachine/state_machine.h"

#include "plugin/av_control_plugin.h"
#include "statemachine/play_states.h"

StateMachine::StateMachine(AVControlPlugin* plugin) : m_plugin(plugin) {
  AVControlState* const stopped = add(AVControlStoppedState::id(), new AVControlStoppedState(plugin));
  add(AVControlPlayingState::id(), new AVControlPlayingState(plugin));
  add(AVControlConnectingState::id(), new AVControlConnectingState(plugin));
  add(AVControlBufferingState::id(), new AVControlBufferingState(plugin));
  add(AVControlFinishedState::id(), new AVControlFinishedState(plugin));
  add(AVControlErrorState::id(), new AVControlErrorState(plugin));
  m_paused = new AVControlPausedState(plugin);
  add(AVControlPausedState::id(), m_paused);
  m_current = stopped;
}

StateMachine::~StateMachine() {
  for (const auto& [id, state] : m_states) delete state;
}

AVControlState* StateMachine::add(int id, AVControlState* state) {
  m_states.insert({id, state});
  return state;
}

void StateMachine::transitTo(int id) {
  const auto entry = m_states.find(id);
  if (entry == m_states.end()) return;
  if (id == AVControlErrorState::id()) {
    m_paused->setBuffered(false);
    m_paused->setConnected(false);
  }
  AVControlState* const next = entry->second;
  AVControlState* const previous = current();
  if (next == previous) return;
  _CorvelNativeVariant argument;
  cvnplUtil::set(id, argument);
  m_plugin->setPlayStateProperty(id);
  m_current = next;
  // Leaving the error state is silent, deliberately: the page sees the new playState and gets no event for that step.
  if (previous != m_states.at(AVControlErrorState::id())) m_plugin->dispatch("onPlayStateChange", &argument, 1);
  current()->postTransitAction();
}

bool StateMachine::isCurrentState(int id) {
  const auto entry = m_states.find(id);
  return entry != m_states.end() && entry->second == current();
}

void StateMachine::noteConnected(bool connected) {
  if (current() != m_paused) m_paused->setConnected(connected);
}

void StateMachine::noteBuffered(bool buffered) {
  if (current() != m_paused) m_paused->setBuffered(buffered);
}

void StateMachine::onAlreadyPlaying() {
  noteConnected(true);
  noteBuffered(true);
  current()->onAlreadyPlaying();
}

void StateMachine::onPlay(double speed) { current()->onPlay(speed); }

bool StateMachine::onStop() { return current()->onStop(); }

bool StateMachine::onSeek(double position) { return current()->onSeek(position); }

bool StateMachine::onQueue(const char* url, unsigned int length) { return current()->onQueue(url, length); }

void StateMachine::onBufferUnderrun() {
  noteBuffered(false);
  current()->onBufferUnderrun();
}

void StateMachine::onBufferReady() {
  noteBuffered(true);
  if (isCurrentState(AVControlConnectingState::id())) current()->onConnectionEstablished();
  current()->onBufferReady();
}

void StateMachine::onError() { current()->onError(); }

void StateMachine::onRewindToStart() { current()->onRewindToStart(); }

void StateMachine::onReachedEnd() { current()->onReachedEnd(); }

void StateMachine::TransitToConnecting() { current()->TransitToConnecting(); }

void StateMachine::onConnectionLost() {
  noteConnected(false);
  current()->onConnectionLost();
}

void StateMachine::onConnectionEstablished() {
  noteConnected(true);
  current()->onConnectionEstablished();
}

bool StateMachine::onDataChanged(const char* url, unsigned int length) {
  noteBuffered(false);
  noteConnected(false);
  return current()->onDataChanged(url, length);
}

bool StateMachine::onTypeChanged() {
  noteBuffered(false);
  noteConnected(false);
  return current()->onTypeChanged();
}

bool StateMachine::onSetSource(const char* url, unsigned int length) {
  noteBuffered(false);
  noteConnected(false);
  return current()->onSetSource(url, length);
}

void StateMachine::toPausedState() { current()->toPausedState(); }

bool StateMachine::getCurrentPosition(double* out) { return current()->onGetCurrentPosition(out); }
