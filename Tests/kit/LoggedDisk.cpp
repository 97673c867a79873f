// Speaks the FUSE protocol directly: the mount is a single file, so six requests suffice.
#include "kit/LoggedDisk.h"

#include <fcntl.h>
#include <linux/fuse.h>
#include <sys/mount.h>
#include <sys/prctl.h>
#include <sys/stat.h>
#include <sys/uio.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fstream>
#include <stdexcept>
#include <string_view>
#include <utility>

namespace velto::kit {

namespace {

constexpr std::size_t mostWritten = std::size_t{1} << 20;

[[noreturn]] void fail(const std::string& what) {
  throw std::runtime_error(what + ": " + std::strerror(errno));
}

// A structure of the protocol from the bytes of a request.
template <typename Part>
Part partOf(std::string_view bytes) {
  Part part{};
  std::memcpy(&part, bytes.data(), std::min(sizeof part, bytes.size()));
  return part;
}

fuse_attr attributesOf(int file) {
  struct stat status {};
  ::fstat(file, &status);
  fuse_attr attributes{};
  attributes.ino = FUSE_ROOT_ID;
  attributes.size = static_cast<__u64>(status.st_size);
  attributes.mode = S_IFREG | S_IRUSR | S_IWUSR;
  attributes.nlink = 1;
  attributes.blksize = 4096;
  return attributes;
}

void writeAt(int file, std::uint64_t offset, std::string_view bytes) {
  while (!bytes.empty()) {
    const ssize_t count = ::pwrite(file, bytes.data(), bytes.size(), static_cast<off_t>(offset));
    if (count <= 0)
      fail("cannot write a disk's image");
    bytes.remove_prefix(static_cast<std::size_t>(count));
    offset += static_cast<std::uint64_t>(count);
  }
}

} // namespace

LoggedDisk::LoggedDisk(std::filesystem::path image, std::chrono::milliseconds flushTime)
    : image_(std::move(image)), file_(image_), flushTime_(flushTime) {
  file_ += ".disk";
  std::ofstream{file_};
  imageFile_ = ::open(image_.c_str(), O_RDWR | O_CLOEXEC);
  channel_ = ::open("/dev/fuse", O_RDWR | O_CLOEXEC);
  if (imageFile_ < 0 || channel_ < 0)
    fail("no image or no FUSE");
  // The root of the mount is a regular file.
  const std::string options =
      "fd=" + std::to_string(channel_) + ",rootmode=100600,user_id=0,group_id=0";
  if (::mount("velto-test", file_.c_str(), "fuse", MS_NOSUID | MS_NODEV, options.c_str()) != 0)
    fail("cannot mount by FUSE");
  thread_ = std::thread([this] { serve(); });
  loop_.emplace(file_);
}

LoggedDisk::~LoggedDisk() {
  loop_.reset();
  // The loop driver closes its file some time after the last close of the device.
  while (::umount2(file_.c_str(), 0) != 0 && errno == EBUSY)
    std::this_thread::sleep_for(std::chrono::milliseconds(5));
  thread_.join();
  ::close(channel_);
  ::close(imageFile_);
}

std::vector<DiskEvent> LoggedDisk::log() const {
  const std::lock_guard guard(mutex_);
  return log_;
}

void LoggedDisk::answer(std::uint64_t request, int error, const void* bytes,
                        std::size_t size) const {
  fuse_out_header header{};
  header.len = static_cast<__u32>(sizeof header + size);
  header.error = -error;
  header.unique = request;
  const iovec parts[] = {{&header, sizeof header}, {const_cast<void*>(bytes), size}};
  static_cast<void>(::writev(channel_, parts, size > 0 ? 2 : 1));
}

void LoggedDisk::serve() {
  // To free memory for this thread, the kernel must not write to the disk that the thread serves.
  ::prctl(PR_SET_IO_FLUSHER, 1, 0, 0, 0);
  std::string buffer(mostWritten + 65536, '\0');
  std::string block;
  for (;;) {
    const ssize_t count = ::read(channel_, buffer.data(), buffer.size());
    if (count < 0 && (errno == EINTR || errno == EAGAIN || errno == ENOENT))
      continue;
    if (count < static_cast<ssize_t>(sizeof(fuse_in_header)))
      return; // unmounted
    const std::string_view request(buffer.data(), static_cast<std::size_t>(count));
    const auto header = partOf<fuse_in_header>(request);
    const std::string_view argument = request.substr(sizeof header);
    const auto reply = [&](const auto& out) { answer(header.unique, 0, &out, sizeof out); };

    switch (header.opcode) {
    case FUSE_INIT: {
      const auto in = partOf<fuse_init_in>(argument);
      fuse_init_out out{};
      out.major = FUSE_KERNEL_VERSION;
      out.minor = std::min<__u32>(in.minor, FUSE_KERNEL_MINOR_VERSION);
      out.max_readahead = in.max_readahead;
      out.flags = in.flags & (FUSE_BIG_WRITES | FUSE_MAX_PAGES | FUSE_ASYNC_READ);
      out.max_write = mostWritten;
      out.max_pages = mostWritten / 4096;
      reply(out);
      break;
    }
    case FUSE_GETATTR:
    case FUSE_SETATTR: {
      fuse_attr_out out{};
      out.attr_valid = 3600;
      out.attr = attributesOf(imageFile_);
      reply(out);
      break;
    }
    case FUSE_OPEN: {
      fuse_open_out out{};
      out.open_flags = FOPEN_DIRECT_IO;
      reply(out);
      break;
    }
    case FUSE_READ: {
      const auto in = partOf<fuse_read_in>(argument);
      block.resize(in.size);
      const ssize_t bytes =
          ::pread(imageFile_, block.data(), block.size(), static_cast<off_t>(in.offset));
      if (bytes < 0)
        answer(header.unique, EIO, nullptr, 0);
      else
        answer(header.unique, 0, block.data(), static_cast<std::size_t>(bytes));
      break;
    }
    case FUSE_WRITE: {
      const auto in = partOf<fuse_write_in>(argument);
      const std::string_view bytes = argument.substr(sizeof in, in.size);
      writeAt(imageFile_, in.offset, bytes);
      {
        const std::lock_guard guard(mutex_);
        log_.push_back({std::chrono::steady_clock::now(), in.offset, std::string(bytes)});
      }
      fuse_write_out out{};
      out.size = in.size;
      reply(out);
      break;
    }
    case FUSE_FSYNC: {
      std::this_thread::sleep_for(flushTime_);
      {
        const std::lock_guard guard(mutex_);
        log_.push_back({std::chrono::steady_clock::now(), 0, {}});
      }
      answer(header.unique, 0, nullptr, 0);
      break;
    }
    case FUSE_RELEASE:
      answer(header.unique, 0, nullptr, 0);
      break;
    case FUSE_FALLOCATE: // discards and zeroing; the kernel then does without
      answer(header.unique, EOPNOTSUPP, nullptr, 0);
      break;
    case FUSE_FORGET:
    case FUSE_BATCH_FORGET:
    case FUSE_INTERRUPT:
      break; // take no answer
    default:
      answer(header.unique, ENOSYS, nullptr, 0);
    }
  }
}

void cutPower(const std::filesystem::path& image, const std::vector<DiskEvent>& log,
              std::chrono::steady_clock::time_point moment, CachedWrites cached,
              std::minstd_rand& random) {
  constexpr std::size_t wholeBytes = 4096;
  const int file = ::open(image.c_str(), O_RDWR | O_CLOEXEC);
  if (file < 0)
    fail("no image to cut");
  const auto end = std::find_if(log.begin(), log.end(),
                                [&](const DiskEvent& event) { return event.time > moment; });
  auto flushed = end;
  while (flushed != log.begin() && !std::prev(flushed)->written.empty())
    --flushed;

  // How many of the cached writes survive differs from cut to cut.
  std::bernoulli_distribution survives(std::uniform_real_distribution<>(0.05, 0.95)(random));
  std::bernoulli_distribution splits(0.3);
  for (auto event = log.begin(); event != end; ++event) {
    const std::string_view bytes = event->written;
    if (event < flushed || cached == CachedWrites::kept) {
      writeAt(file, event->offset, bytes);
    } else if (cached == CachedWrites::torn) {
      if (!splits(random)) {
        if (survives(random))
          writeAt(file, event->offset, bytes);
        continue;
      }
      for (std::size_t begin = 0; begin < bytes.size();) {
        const std::size_t inBlock = (event->offset + begin) % wholeBytes;
        const std::string_view part = bytes.substr(begin, wholeBytes - inBlock);
        if (survives(random))
          writeAt(file, event->offset + begin, part);
        begin += part.size();
      }
    }
  }
  ::close(file);
}

} // namespace velto::kit
