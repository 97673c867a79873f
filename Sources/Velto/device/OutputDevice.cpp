#include "OutputDevice.h"

#include "DSP.h"

#include <atomic>
#include <cubeb/cubeb.h>
#include <span>
#include <utility>

namespace velto {

namespace {

std::string withCode(std::string text, int code) {
  return std::move(text) + " (cubeb error " + std::to_string(code) + ")";
}

class CubebDevice final : public OutputDevice {
public:
  CubebDevice() = default;
  ~CubebDevice() override { stop(); }

  CubebDevice(const CubebDevice&) = delete;
  CubebDevice& operator=(const CubebDevice&) = delete;

  std::optional<std::string> start(Renderer& renderer) override {
    renderer_ = &renderer;
    auto error = open();
    if (error)
      stop();
    return error;
  }

  void stop() override {
    // Destroying the stream stops it. Stopping it first could block if the server is gone.
    if (stream_ != nullptr)
      cubeb_stream_destroy(stream_);
    stream_ = nullptr;
    if (context_ != nullptr)
      cubeb_destroy(context_);
    context_ = nullptr;
  }

  [[nodiscard]] bool failed() const override { return failed_.load(std::memory_order_relaxed); }

  // cubeb aborts if the latency is queried after an error, so return the requested one.
  [[nodiscard]] std::size_t latencyFrames() const override { return outputLatencyFrames; }

private:
  std::optional<std::string> open() {
    if (const int code = cubeb_init(&context_, "Velto", nullptr); code != CUBEB_OK)
      return withCode("no sound server or sound card is available", code);
    cubeb_stream_params format{};
    format.format = CUBEB_SAMPLE_FLOAT32NE;
    format.rate = static_cast<std::uint32_t>(sampleRateHz);
    format.channels = 2;
    format.layout = CUBEB_LAYOUT_STEREO;
    format.prefs = CUBEB_STREAM_PREF_NONE;
    if (const int code =
            cubeb_stream_init(context_, &stream_, "Velto", nullptr, nullptr, nullptr, &format,
                              outputLatencyFrames, render, stateChanged, this);
        code != CUBEB_OK)
      return withCode("the sound output cannot be opened", code);
    if (const int code = cubeb_stream_start(stream_); code != CUBEB_OK)
      return withCode("the sound output cannot be started", code);
    return std::nullopt;
  }

  // Audio thread.
  static long render(cubeb_stream*, void* device, const void*, void* output, long frames) {
    fillOutput(*static_cast<CubebDevice*>(device)->renderer_, static_cast<float*>(output),
               static_cast<std::size_t>(frames));
    return frames;
  }

  // Any thread.
  static void stateChanged(cubeb_stream*, void* device, cubeb_state state) {
    if (state == CUBEB_STATE_ERROR)
      static_cast<CubebDevice*>(device)->failed_.store(true, std::memory_order_relaxed);
  }

  Renderer* renderer_ = nullptr;
  cubeb* context_ = nullptr;
  cubeb_stream* stream_ = nullptr;
  std::atomic<bool> failed_{false};
};

} // namespace

void fillOutput(Renderer& renderer, float* interleaved, std::size_t frames) noexcept {
  renderer.render(interleaved, frames);
  for (float& sample : std::span(interleaved, 2 * frames))
    sample *= outputHeadroom;
}

std::unique_ptr<OutputDevice> makeDefaultOutputDevice() {
  return std::make_unique<CubebDevice>();
}

} // namespace velto
