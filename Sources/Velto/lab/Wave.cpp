#include "Wave.h"

#include "Command.h"
#include "DSP.h"

#include <sndfile.h>

#include <algorithm>
#include <cstddef>
#include <cstdio>
#include <utility>
#include <vector>

namespace velto {

namespace {

// A file in memory, as libsndfile sees it.
struct Memory {
  std::string bytes;
  std::size_t at = 0;
};

Memory& memory(void* data) {
  return *static_cast<Memory*>(data);
}

sf_count_t lengthOf(void* data) {
  return static_cast<sf_count_t>(memory(data).bytes.size());
}

sf_count_t seek(sf_count_t offset, int whence, void* data) {
  Memory& file = memory(data);
  sf_count_t base = 0;
  if (whence == SEEK_CUR)
    base = static_cast<sf_count_t>(file.at);
  else if (whence == SEEK_END)
    base = lengthOf(data);
  file.at = static_cast<std::size_t>(std::max<sf_count_t>(base + offset, 0));
  return static_cast<sf_count_t>(file.at);
}

sf_count_t readBytes(void* place, sf_count_t count, void* data) {
  Memory& file = memory(data);
  const std::size_t begin = std::min(file.at, file.bytes.size());
  const std::size_t most = std::min(static_cast<std::size_t>(count), file.bytes.size() - begin);
  std::copy_n(file.bytes.data() + begin, most, static_cast<char*>(place));
  file.at = begin + most;
  return static_cast<sf_count_t>(most);
}

sf_count_t writeBytes(const void* bytes, sf_count_t count, void* data) {
  Memory& file = memory(data);
  const auto size = static_cast<std::size_t>(count);
  file.bytes.resize(std::max(file.bytes.size(), file.at + size));
  std::copy_n(static_cast<const char*>(bytes), size, file.bytes.data() + file.at);
  file.at += size;
  return count;
}

sf_count_t tell(void* data) {
  return static_cast<sf_count_t>(memory(data).at);
}

std::vector<float> interleaved(const Slot& slot) {
  std::vector<float> frames;
  frames.reserve(2 * slot.l->size());
  for (std::size_t i = 0; i < slot.l->size(); ++i) {
    frames.push_back((*slot.l)[i]);
    frames.push_back((*slot.r)[i]);
  }
  return frames;
}

} // namespace

std::string Lab::waveFile(const Slot& slot) {
  Memory file;
  SF_VIRTUAL_IO functions{lengthOf, seek, readBytes, writeBytes, tell};
  SF_INFO info{};
  info.samplerate = static_cast<int>(sampleRateHz);
  info.channels = 2;
  info.format = SF_FORMAT_WAV | SF_FORMAT_FLOAT;
  SNDFILE* const sound = sf_open_virtual(&functions, SFM_WRITE, &info, &file);
  if (sound == nullptr)
    throw Failure(std::string("no WAV file: ") + sf_strerror(nullptr));
  // The chunk of peaks has the time in it.
  sf_command(sound, SFC_SET_ADD_PEAK_CHUNK, nullptr, SF_FALSE);
  const auto frames = interleaved(slot);
  const auto count = static_cast<sf_count_t>(slot.l->size());
  const bool isWritten = sf_writef_float(sound, frames.data(), count) == count;
  if (sf_close(sound) != 0 || !isWritten)
    throw Failure("no WAV file: libsndfile did not write it");
  return std::move(file.bytes);
}

} // namespace velto
