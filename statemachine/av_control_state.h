// SPDX-License-Identifier: Apache-2.0
// What an event means in one play state. The base class answers every event with "not in this state"; the seven states override.
#pragma once

class AVControlPlugin;

class AVControlState {
 public:
  explicit AVControlState(AVControlPlugin* plugin) : m_plugin(plugin) {}
  AVControlState(const AVControlState&) = delete;
  AVControlState& operator=(const AVControlState&) = delete;
  virtual ~AVControlState() = default;

  virtual const char* type() = 0;  ///< the state's name
  virtual void postTransitAction() {}
  virtual void onAlreadyPlaying() {}
  virtual void onPlay(double /*speed*/) {}
  virtual bool onStop();
  virtual bool onSeek(double /*position*/) { return false; }
  virtual bool onQueue(const char* url, unsigned int length);
  virtual bool onDataChanged(const char* url, unsigned int length);
  virtual bool onTypeChanged();
  virtual bool onSetSource(const char* url, unsigned int length);
  virtual void onBufferUnderrun() {}
  virtual void onBufferReady() {}
  virtual void onError() {}
  virtual void onRewindToStart() {}
  virtual void onReachedEnd() {}
  virtual void onConnectionLost() {}
  virtual void onConnectionEstablished() {}
  virtual void TransitToConnecting() {}
  virtual void toPausedState() {}
  virtual bool onGetCurrentPosition(double* out);

 protected:
  /// Stops the player; the move to stopped follows when the library confirms it.
  bool stopPlayerAndSwitchState();
  void transitTo(int id);
  void enterError();       ///< error 2, then the error state
  void setGenericError();  ///< error 2
  void startFromIdle(double speed);
  bool refreshedPosition(double* out);

  AVControlPlugin* const m_plugin;
};
