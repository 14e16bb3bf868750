// SPDX-License-Identifier: Apache-2.0
// The seven play states. Their ids are the playState numbers of the public A/V Control object.
#pragma once

#include <atomic>

#include "statemachine/av_control_state.h"

class AVControlStoppedState : public AVControlState {
 public:
  using AVControlState::AVControlState;
  static constexpr int id() { return 0; }
  const char* type() override { return "stopped"; }
  void postTransitAction() override;
  void onPlay(double speed) override;
  bool onStop() override;
  bool onSeek(double position) override;
  bool onQueue(const char* url, unsigned int length) override;
  bool onDataChanged(const char* url, unsigned int length) override;
  void onConnectionEstablished() override;
  void onError() override;
  void TransitToConnecting() override;
  void toPausedState() override;
};

class AVControlPlayingState : public AVControlState {
 public:
  using AVControlState::AVControlState;
  static constexpr int id() { return 1; }
  const char* type() override { return "playing"; }
  void onAlreadyPlaying() override {}
  void onPlay(double speed) override;
  bool onSeek(double position) override;
  void onBufferUnderrun() override;
  void onError() override;
  void onRewindToStart() override;
  void onReachedEnd() override;
  void toPausedState() override;
  bool onGetCurrentPosition(double* out) override;
};

class AVControlPausedState : public AVControlState {
 public:
  using AVControlState::AVControlState;
  static constexpr int id() { return 2; }
  const char* type() override { return "paused"; }
  void onPlay(double speed) override;
  bool onSeek(double position) override;
  void onAlreadyPlaying() override;
  void onBufferReady() override;
  void onBufferUnderrun() override;
  void onConnectionEstablished() override;
  void onConnectionLost() override;
  void toPausedState() override {}

  void setBuffered(bool buffered) { m_buffered = buffered; }
  void setConnected(bool connected) { m_connected = connected; }

 private:
  std::atomic<bool> m_buffered{false};  ///< kept up to date; only the connected flag is ever consulted
  std::atomic<bool> m_connected{false};
};

class AVControlConnectingState : public AVControlState {
 public:
  using AVControlState::AVControlState;
  static constexpr int id() { return 3; }
  const char* type() override { return "connecting"; }
  void onPlay(double speed) override;
  bool onStop() override;
  bool onSeek(double position) override;
  void onConnectionEstablished() override;
  void onError() override;
  void toPausedState() override;
};

class AVControlBufferingState : public AVControlState {
 public:
  using AVControlState::AVControlState;
  static constexpr int id() { return 4; }
  const char* type() override { return "buffering"; }
  void onPlay(double speed) override;
  bool onSeek(double position) override;
  void onAlreadyPlaying() override;
  void onBufferReady() override;
  void onConnectionLost() override;
  void onError() override;
  void toPausedState() override;
};

class AVControlFinishedState : public AVControlState {
 public:
  using AVControlState::AVControlState;
  static constexpr int id() { return 5; }
  const char* type() override { return "finished"; }
  void postTransitAction() override;
  void onPlay(double speed) override;
  bool onQueue(const char* url, unsigned int length) override;
  bool onDataChanged(const char* url, unsigned int length) override;
  bool onGetCurrentPosition(double* out) override;
};

class AVControlErrorState : public AVControlState {
 public:
  using AVControlState::AVControlState;
  static constexpr int id() { return 6; }
  const char* type() override { return "error"; }
  void postTransitAction() override;
  void onPlay(double speed) override;
  bool onStop() override;
  bool onQueue(const char* url, unsigned int length) override;
};
