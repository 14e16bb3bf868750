// SPDX-License-Identifier: Apache-2.0
// The functions behind the rows of the script tables. False: the access failed.
#pragma once

#include "host/corvel_native.h"

bool getPlayPositionThunk(CorvelNativePropertyBase* self, _CorvelNativeVariant* result);
bool getTtmlXmlPlayPositionThunk(CorvelNativePropertyBase* self, _CorvelNativeVariant* result);
bool getPlayTimeThunk(CorvelNativePropertyBase* self, _CorvelNativeVariant* result);
bool getSpeedThunk(CorvelNativePropertyBase* self, _CorvelNativeVariant* result);
bool getErrorThunk(CorvelNativePropertyBase* self, _CorvelNativeVariant* result);

bool setDataThunk(CorvelNativePropertyBase* self, const _CorvelNativeVariant* value);
bool setWidthThunk(CorvelNativePropertyBase* self, const _CorvelNativeVariant* value);
bool setHeightThunk(CorvelNativePropertyBase* self, const _CorvelNativeVariant* value);
bool setTypeThunk(CorvelNativePropertyBase* self, const _CorvelNativeVariant* value);
bool setCacheThunk(CorvelNativePropertyBase* self, const _CorvelNativeVariant* value);
bool setLoopThunk(CorvelNativePropertyBase* self, const _CorvelNativeVariant* value);
bool setSubtitleParamThunk(CorvelNativePropertyBase* self, const _CorvelNativeVariant* value);
bool setPlayerTypeThunk(CorvelNativePropertyBase* self, const _CorvelNativeVariant* value);
bool setUserAgentThunk(CorvelNativePropertyBase* self, const _CorvelNativeVariant* value);
bool setNativeWindowSizeThunk(CorvelNativePropertyBase* self, const _CorvelNativeVariant* value);
bool setNumOfSubtitlesThunk(CorvelNativePropertyBase* self, const _CorvelNativeVariant* value);

bool playThunk(CorvelNativePropertyBase* self, const _CorvelNativeVariant* args, unsigned int argc, _CorvelNativeVariant* result);
bool stopThunk(CorvelNativePropertyBase* self, const _CorvelNativeVariant* args, unsigned int argc, _CorvelNativeVariant* result);
bool seekThunk(CorvelNativePropertyBase* self, const _CorvelNativeVariant* args, unsigned int argc, _CorvelNativeVariant* result);
bool setVolumeThunk(CorvelNativePropertyBase* self, const _CorvelNativeVariant* args, unsigned int argc,
                    _CorvelNativeVariant* result);
bool nextThunk(CorvelNativePropertyBase* self, const _CorvelNativeVariant* args, unsigned int argc, _CorvelNativeVariant* result);
bool previousThunk(CorvelNativePropertyBase* self, const _CorvelNativeVariant* args, unsigned int argc,
                   _CorvelNativeVariant* result);
bool getSinkProtocolInfoThunk(CorvelNativePropertyBase* self, const _CorvelNativeVariant* args, unsigned int argc,
                              _CorvelNativeVariant* result);
bool getTransportStateVariablesThunk(CorvelNativePropertyBase* self, const _CorvelNativeVariant* args, unsigned int argc,
                                     _CorvelNativeVariant* result);
bool setTransportStateVariablesThunk(CorvelNativePropertyBase* self, const _CorvelNativeVariant* args, unsigned int argc,
                                     _CorvelNativeVariant* result);
bool focusThunk(CorvelNativePropertyBase* self, const _CorvelNativeVariant* args, unsigned int argc, _CorvelNativeVariant* result);
bool queueThunk(CorvelNativePropertyBase* self, const _CorvelNativeVariant* args, unsigned int argc, _CorvelNativeVariant* result);
