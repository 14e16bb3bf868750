// SPDX-License-Identifier: Apache-2.0
#include "platform/mediamgmnt/key_trial.h"

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavutil/mem.h>
}

#include <dlfcn.h>

#include <cstring>
#include <string>
#include <utility>
#include <vector>

namespace mediamgmnt {
namespace {

/// What little there is in a still or silent sample can be read by accident.
constexpr int kEnoughSamples = 2;
constexpr std::size_t kEnoughBytes = 1500;
constexpr int kMostSamples = 6;
/// Of libav's own messages: what is tried may well be wrong.
constexpr int kSilent = 100;

/// libavcodec's functions. GStreamer's decoders are made of the same library, which a process that plays nothing protected need not
/// load: so it is looked up, not linked.
struct Functions {
  decltype(&avcodec_find_decoder) findDecoder = nullptr;
  decltype(&avcodec_alloc_context3) allocContext = nullptr;
  decltype(&avcodec_open2) open = nullptr;
  decltype(&avcodec_send_packet) send = nullptr;
  decltype(&avcodec_receive_frame) receive = nullptr;
  decltype(&avcodec_free_context) freeContext = nullptr;
  decltype(&av_packet_alloc) allocPacket = nullptr;
  decltype(&av_packet_free) freePacket = nullptr;
  decltype(&av_new_packet) fillPacket = nullptr;
  decltype(&av_frame_alloc) allocFrame = nullptr;
  decltype(&av_frame_free) freeFrame = nullptr;
  decltype(&av_mallocz) allocate = nullptr;
};

class Loader {
 public:
  explicit Loader(const std::string& name) : m_library(dlopen(name.c_str(), RTLD_NOW | RTLD_LOCAL)) {}

  template <typename Function>
  Loader& find(const char* name, Function& out) {
    // Its dependencies are searched too: some of these are in libavutil.
    out = m_library != nullptr ? reinterpret_cast<Function>(dlsym(m_library, name)) : nullptr;
    m_complete = m_complete && out != nullptr;
    return *this;
  }

  bool isComplete() const { return m_complete; }

 private:
  void* m_library;  ///< stays loaded
  bool m_complete = true;
};

/// @return null when the library that this was built against is not there.
const Functions* load() {
  static Functions functions;
  Loader loader("libavcodec.so." + std::to_string(LIBAVCODEC_VERSION_MAJOR));
  loader.find("avcodec_find_decoder", functions.findDecoder)
      .find("avcodec_alloc_context3", functions.allocContext)
      .find("avcodec_open2", functions.open)
      .find("avcodec_send_packet", functions.send)
      .find("avcodec_receive_frame", functions.receive)
      .find("avcodec_free_context", functions.freeContext)
      .find("av_packet_alloc", functions.allocPacket)
      .find("av_packet_free", functions.freePacket)
      .find("av_new_packet", functions.fillPacket)
      .find("av_frame_alloc", functions.allocFrame)
      .find("av_frame_free", functions.freeFrame)
      .find("av_mallocz", functions.allocate);
  return loader.isComplete() ? &functions : nullptr;
}

const Functions* libav() {
  static const Functions* const functions = load();
  return functions;
}

AVCodecID codecOf(const GstStructure& caps) {
  const std::string type = gst_structure_get_name(&caps);
  gint version = 0;
  gst_structure_get_int(&caps, "mpegversion", &version);
  if (type == "video/x-h264") return AV_CODEC_ID_H264;
  if (type == "video/x-h265") return AV_CODEC_ID_HEVC;
  return type == "audio/mpeg" && version == 4 ? AV_CODEC_ID_AAC : AV_CODEC_ID_NONE;
}

std::vector<std::uint8_t> setUpOf(const GstStructure& caps) {
  const GValue* const value = gst_structure_get_value(&caps, "codec_data");
  if (value == nullptr || !GST_VALUE_HOLDS_BUFFER(value)) return {};
  GstBuffer* const buffer = gst_value_get_buffer(value);
  std::vector<std::uint8_t> bytes(gst_buffer_get_size(buffer));
  bytes.resize(gst_buffer_extract(buffer, 0, bytes.data(), bytes.size()));
  return bytes;
}

}  // namespace

class KeyTrial::Decoder {
 public:
  explicit Decoder(const Functions& av) : m_av(av) {}
  Decoder(const Decoder&) = delete;
  Decoder& operator=(const Decoder&) = delete;
  ~Decoder() {
    m_av.freeFrame(&m_frame);
    m_av.freePacket(&m_packet);
    m_av.freeContext(&m_context);
  }

  bool open(AVCodecID id, const std::vector<std::uint8_t>& setUp) {
    const AVCodec* const codec = m_av.findDecoder(id);
    if (codec == nullptr) return false;
    m_context = m_av.allocContext(codec);
    m_packet = m_av.allocPacket();
    m_frame = m_av.allocFrame();
    if (m_context == nullptr || m_packet == nullptr || m_frame == nullptr || !giveSetUp(setUp)) return false;
    m_context->thread_count = 1;
    m_context->flags |= AV_CODEC_FLAG_LOW_DELAY;
    m_context->err_recognition = AV_EF_EXPLODE;
    m_context->error_concealment = 0;
    m_context->log_level_offset = kSilent;
    return m_av.open(m_context, codec, nullptr) == 0;
  }

  bool decodes(const std::uint8_t* sample, std::size_t size) {
    if (m_av.fillPacket(m_packet, static_cast<int>(size)) != 0) return true;  // no memory says nothing about the key
    std::memcpy(m_packet->data, sample, size);
    const int sent = m_av.send(m_context, m_packet);
    m_av.freePacket(&m_packet);
    m_packet = m_av.allocPacket();
    if (m_packet == nullptr) return true;
    return sent == 0 && framesAreSound();
  }

 private:
  bool giveSetUp(const std::vector<std::uint8_t>& bytes) {
    if (bytes.empty()) return true;
    m_context->extradata = static_cast<std::uint8_t*>(m_av.allocate(bytes.size() + AV_INPUT_BUFFER_PADDING_SIZE));
    if (m_context->extradata == nullptr) return false;
    std::memcpy(m_context->extradata, bytes.data(), bytes.size());
    m_context->extradata_size = static_cast<int>(bytes.size());
    return true;
  }

  bool framesAreSound() {
    for (;;) {
      const int received = m_av.receive(m_context, m_frame);
      if (received == AVERROR(EAGAIN) || received == AVERROR_EOF) return true;
      if (received != 0 || m_frame->decode_error_flags != 0) return false;
    }
  }

  const Functions& m_av;
  AVCodecContext* m_context = nullptr;
  AVPacket* m_packet = nullptr;
  AVFrame* m_frame = nullptr;
};

KeyTrial::KeyTrial(std::unique_ptr<Decoder> decoder, bool isVideo) : m_decoder(std::move(decoder)), m_isVideo(isVideo) {}

KeyTrial::~KeyTrial() = default;

std::unique_ptr<KeyTrial> KeyTrial::begin(const GstCaps* caps) {
  const GstStructure& structure = *gst_caps_get_structure(caps, 0);
  const AVCodecID id = codecOf(structure);
  if (id == AV_CODEC_ID_NONE || libav() == nullptr) return nullptr;
  auto decoder = std::make_unique<Decoder>(*libav());
  if (!decoder->open(id, setUpOf(structure))) return nullptr;
  return std::unique_ptr<KeyTrial>(new KeyTrial(std::move(decoder), id != AV_CODEC_ID_AAC));
}

KeyTrial::Verdict KeyTrial::take(const std::uint8_t* sample, std::size_t size) {
  const bool isFirst = !hasBegun();
  const bool isGood = m_decoder->decodes(sample, size);
  ++(isGood ? m_good : m_bad);
  m_bytes += size;
  // Pictures that follow a broken one are little more than differences to it: they break no rule.
  if (!isGood && (m_isVideo ? isFirst : m_bad >= kEnoughSamples)) return Verdict::Wrong;
  const bool isEnough = m_good >= kEnoughSamples && m_bytes >= kEnoughBytes;
  return isEnough || m_good + m_bad >= kMostSamples ? Verdict::Fits : Verdict::Undecided;
}

}  // namespace mediamgmnt
