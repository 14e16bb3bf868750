// SPDX-License-Identifier: Apache-2.0
// The play-state machine of one A/V Control object: forwards each event to the current state, and is the only place where the state
// changes, "playState" is set and "onPlayStateChange" is raised.
//
//   stopped -> connecting -> buffering <-> playing -> finished -> connecting (again)
//                                 |           |
//                                 +-> paused <+          any of the first four -> error -> stopped (silently)
#pragma once

#include <atomic>
#include <map>

class AVControlPausedState;
class AVControlPlugin;
class AVControlState;

/// Takes no lock: a lock held through onStop would block the "STOPPED" that ends its wait. Runs on the script thread, on the media
/// library's threads, on the player's worker and on the renew thread.
class StateMachine {
 public:
  /// Starts in stopped, without an event. @p plugin outlives the machine.
  explicit StateMachine(AVControlPlugin* plugin);
  StateMachine(const StateMachine&) = delete;
  StateMachine& operator=(const StateMachine&) = delete;
  ~StateMachine();

  /// No effect for an unknown id and for the current state's.
  void transitTo(int id);
  bool isCurrentState(int id);

  void onAlreadyPlaying();
  void onPlay(double speed);
  bool onStop();
  bool onSeek(double position);
  bool onQueue(const char* url, unsigned int length);
  void onBufferUnderrun();
  void onBufferReady();
  void onError();
  void onRewindToStart();
  void onReachedEnd();
  void TransitToConnecting();
  void onConnectionLost();
  void onConnectionEstablished();
  bool onDataChanged(const char* url, unsigned int length);
  bool onTypeChanged();
  bool onSetSource(const char* url, unsigned int length);
  void toPausedState();
  bool getCurrentPosition(double* out);

 private:
  AVControlState* current() const { return m_current; }
  /// What a later pause needs to know; in the paused state itself its own handler does it.
  void noteConnected(bool connected);
  void noteBuffered(bool buffered);
  AVControlState* add(int id, AVControlState* state);

  std::map<int, AVControlState*> m_states;  ///< owned; fixed after construction
  AVControlPausedState* m_paused = nullptr;
  AVControlPlugin* const m_plugin;
  std::atomic<AVControlState*> m_current;
};
