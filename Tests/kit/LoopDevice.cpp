#include "kit/LoopDevice.h"

#include <fcntl.h>
#include <linux/loop.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <stdexcept>

namespace velto::kit {

LoopDevice::LoopDevice(const std::filesystem::path& file) {
  const int control = ::open("/dev/loop-control", O_RDWR | O_CLOEXEC);
  const int backing = ::open(file.c_str(), O_RDWR | O_CLOEXEC);
  int error = errno;
  // Another process may take the free device first.
  for (int attempt = 0; control >= 0 && backing >= 0 && descriptor_ < 0 && attempt < 10;
       ++attempt) {
    const int number = ::ioctl(control, LOOP_CTL_GET_FREE);
    path_ = "/dev/loop" + std::to_string(number);
    const int device = ::open(path_.c_str(), O_RDWR | O_CLOEXEC);
    loop_config configuration{};
    configuration.fd = static_cast<__u32>(backing);
    configuration.info.lo_flags = LO_FLAGS_AUTOCLEAR;
    if (device >= 0 && ::ioctl(device, LOOP_CONFIGURE, &configuration) == 0) {
      descriptor_ = device;
    } else {
      error = errno;
      ::close(device);
    }
  }
  ::close(control);
  ::close(backing);
  if (descriptor_ < 0)
    throw std::runtime_error(std::string("no loop device: ") + std::strerror(error));
}

LoopDevice::~LoopDevice() {
  ::close(descriptor_);
}

} // namespace velto::kit
