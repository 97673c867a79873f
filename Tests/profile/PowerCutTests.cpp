// The practice record survives a loss of power on real file systems.
//
// A program practises on a file system whose disk logs every write and flush. From the log follows
// what the disk holds after a power cut at a given moment: everything that was flushed, and all,
// none or a random part of the rest (kit/LoggedDisk.h). Each such disk is mounted, which makes the
// file system replay its journal, and the record is loaded from it.
#include "AnswerLog.h"

#include "kit/Command.h"
#include "kit/Eventually.h"
#include "kit/Files.h"
#include "kit/LoggedDisk.h"
#include "kit/LoopDevice.h"
#include "kit/NumberedAnswers.h"
#include "kit/RecordTesting.h"

#include "Coding.h"

#include <fcntl.h>
#include <sched.h>
#include <spawn.h>
#include <sys/mount.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <optional>
#include <ostream>
#include <random>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

namespace velto {
namespace {

using namespace testing;
using kit::CachedWrites;
using kit::DiskEvent;
using kit::LoggedDisk;
using kit::LoopDevice;
using Clock = AnswerLog::Clock;
using std::chrono::milliseconds;

namespace fs = std::filesystem;

double inSeconds(Clock::duration time) {
  return std::chrono::duration<double>(time).count();
}

struct FileSystem {
  const char* name;
  const char* type;
  const char* make;    // command; the image's path is appended
  const char* options; // of the mount
  const char* often;   // added in every second session: commits each second
};

void PrintTo(const FileSystem& system, std::ostream* out) {
  *out << system.name;
}

// How a session begins.
struct Start {
  const char* name = "";
  std::optional<std::int64_t> rows; // nullopt: the disk after the last cut
  bool earlier = false;             // the record is at its earlier location
};

constexpr Start starts[] = {
    {"no record", 0},
    {"the last cut's disk", {}},
    {"700 rows at the earlier location", 700, true},
    {"the last cut's disk", {}},
    {"4990 rows", 4990},
    {"the last cut's disk", {}},
    {"5000 rows", 5000},
    {"the last cut's disk", {}},
};

// A mount that ends with the object.
class Mounted {
public:
  Mounted(const std::string& device, fs::path folder, const FileSystem& system,
          const std::string& options)
      : folder_(std::move(folder)) {
    fs::create_directories(folder_);
    if (::mount(device.c_str(), folder_.c_str(), system.type, MS_NOATIME, options.c_str()) != 0)
      throw std::runtime_error(std::string("cannot mount ") + system.type + ": " +
                               std::strerror(errno));
  }
  Mounted(const Mounted&) = delete;
  Mounted& operator=(const Mounted&) = delete;
  // Retries: a record that was closed on a slow disk may still be writing.
  ~Mounted() {
    EXPECT_TRUE(kit::eventually([&] { return ::umount(folder_.c_str()) == 0; }))
        << std::strerror(errno);
  }

private:
  fs::path folder_;
};

// Another program on the same disk. In a loop, replaces a numbered file of the record's size and
// syncs the file and its folder. This commits the journal in the middle of the record's saves,
// measures how long the disk takes to flush a record, and shows whether the disk keeps what it has
// flushed.
class Neighbour {
public:
  struct Flushes {
    struct Flush {
      Clock::time_point begin, end;
    };
    std::ptrdiff_t first = 0; // the number of the file at the start
    std::vector<Flush> all;

    // The number of the file on the disk at `moment`.
    [[nodiscard]] std::ptrdiff_t fileAt(Clock::time_point moment) const {
      return first + std::count_if(all.begin(), all.end(),
                                   [&](const Flush& flush) { return flush.end <= moment; });
    }
    // The longest time that it took to replace the file.
    [[nodiscard]] Clock::duration longest() const {
      Clock::duration longest{};
      for (const Flush& flush : all)
        longest = std::max(longest, flush.end - flush.begin);
      return longest;
    }
  };

  explicit Neighbour(fs::path folder) : folder_(std::move(folder)), thread_([this] { run(); }) {}
  Neighbour(const Neighbour&) = delete;
  Neighbour& operator=(const Neighbour&) = delete;
  ~Neighbour() { static_cast<void>(ended()); }

  // Stops the thread.
  Flushes ended() {
    ended_ = true;
    if (thread_.joinable())
      thread_.join();
    return flushes_;
  }

  // The number of the file in `folder`, from 1; 0 if it is missing or incomplete.
  static std::ptrdiff_t fileIn(const fs::path& folder) {
    const std::string content = kit::contentOf(folder / name);
    return content.size() == size ? std::strtol(content.c_str(), nullptr, 10) : 0;
  }

private:
  static constexpr const char* name = "neighbour";
  static constexpr std::size_t size = 1200000;

  void run() {
    std::minstd_rand random(std::random_device{}());
    std::uniform_int_distribution<int> pause(0, 300);
    std::ptrdiff_t number = flushes_.first = fileIn(folder_);
    while (!ended_) {
      std::string content = std::to_string(++number);
      content.resize(size, ' ');
      const auto begin = Clock::now();
      kit::put(folder_ / "neighbour.part", content);
      force(folder_ / "neighbour.part");
      fs::rename(folder_ / "neighbour.part", folder_ / name);
      force(folder_);
      flushes_.all.push_back({begin, Clock::now()});
      std::this_thread::sleep_for(milliseconds(pause(random)));
    }
  }

  static void force(const fs::path& path) {
    const int descriptor = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
    EXPECT_EQ(::fsync(descriptor), 0) << path;
    ::close(descriptor);
  }

  fs::path folder_;
  Flushes flushes_;
  std::atomic<bool> ended_ = false;
  std::thread thread_;
};

class Writer {
public:
  Writer(const fs::path& data, const fs::path& log, std::minstd_rand::result_type seed,
         int seconds) {
    std::string words[] = {VELTO_PRACTICE_WRITER, log.string(), std::to_string(seed),
                           std::to_string(seconds)};
    std::string variable = "XDG_DATA_HOME=" + data.string();
    char* arguments[] = {words[0].data(), words[1].data(), words[2].data(), words[3].data(),
                         nullptr};
    char* environment[] = {variable.data(), nullptr};
    if (::posix_spawn(&process_, words[0].c_str(), nullptr, nullptr, arguments, environment) != 0)
      throw std::runtime_error("cannot start " + words[0]);
  }
  Writer(const Writer&) = delete;
  Writer& operator=(const Writer&) = delete;
  ~Writer() { kill(); }

  // Waits for the end. Returns the wait status.
  int end() {
    int status = -1;
    while (process_ > 0 && ::waitpid(process_, &status, 0) < 0 && errno == EINTR) {
    }
    process_ = -1;
    return status;
  }
  void kill() {
    if (process_ > 0)
      ::kill(process_, SIGKILL);
    static_cast<void>(end());
  }

private:
  pid_t process_ = -1;
};

// A moment at which the power is lost, and what it leaves of the disk's cache.
struct Cut {
  Clock::time_point moment;
  CachedWrites cached = CachedWrites::kept;
  Clock::duration mayLose{};    // answers acknowledged this long before may be lost
  std::ptrdiff_t neighbour = 0; // number of the neighbour's file on the disk
};

const char* nameOf(CachedWrites cached) {
  switch (cached) {
  case CachedWrites::kept:
    return "kept";
  case CachedWrites::lost:
    return "lost";
  case CachedWrites::torn:
    return "torn";
  }
  return "";
}

// The names and sizes of a folder's files.
std::string listing(const fs::path& folder) {
  std::string text;
  std::error_code error;
  for (const auto& entry : fs::directory_iterator(folder, error)) {
    text += entry.path().filename().string() + ' ';
    text += entry.is_regular_file() ? std::to_string(entry.file_size()) : "folder";
    text += "; ";
  }
  return text;
}

int cutsInASession() {
  const char* cuts = std::getenv("VELTO_TEST_CUTS");
  return cuts == nullptr ? 6 : std::atoi(cuts);
}

class PowerCut : public ::testing::TestWithParam<FileSystem> {
protected:
  void SetUp() override {
    if (const std::string reason = obstacle(); !reason.empty())
      GTEST_SKIP() << GetParam().name << ": " << reason;
  }

  // Runs a session, then checks what its power cuts leave.
  void practise(std::size_t session);

private:
  // Why the test cannot run here; empty if it can.
  [[nodiscard]] std::string obstacle();
  void begin(const Start& start);
  void check(const Cut& cut, const std::vector<DiskEvent>& log, const AnswerLog& answers);
  [[nodiscard]] std::vector<Cut> cutsBetween(Clock::time_point begin, Clock::time_point end,
                                             const std::vector<DiskEvent>& log);
  [[nodiscard]] std::string options(std::size_t session) const {
    const bool often = session % 2 == 1 && GetParam().often[0] != '\0';
    return std::string(GetParam().options) + (often ? std::string(",") + GetParam().often : "");
  }
  [[nodiscard]] fs::path file(const char* name) const { return scratch_.path() / name; }
  [[nodiscard]] fs::path data() const { return file("mount") / "data"; }
  [[nodiscard]] ProfileLocation location() const {
    return {data() / "MORLA Velto", data() / "Velto" / "profile.json"};
  }
  void copy(const char* from, const char* to) const {
    const auto command = "cp --sparse=always " + file(from).string() + ' ' + file(to).string();
    if (kit::runCommand(command).status != 0)
      throw std::runtime_error(command);
  }

  kit::ScratchFolder scratch_;
  std::minstd_rand random_{std::random_device{}()};
  std::string session_; // for messages

protected:
  int cuts_ = 0;
  int failed_ = 0;      // too few or too many answers left
  int lostEarlier_ = 0; // lost answers of earlier sessions
  Clock::duration longestLoss_{};
  Clock::duration longestFlush_{};
};

std::string PowerCut::obstacle() {
  if (::geteuid() != 0)
    return "only root can mount";
  for (const char* device : {"/dev/loop-control", "/dev/fuse"})
    if (::access(device, R_OK | W_OK) != 0)
      return std::string("no ") + device;
  if (::unshare(CLONE_NEWNS) != 0 ||
      ::mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) != 0)
    return "mounting is not permitted";
  const std::string make(GetParam().make);
  if (kit::runCommand("command -v " + make.substr(0, make.find(' '))).status != 0)
    return "no " + make.substr(0, make.find(' '));
  begin({"", 0});
  try {
    const LoopDevice disk(file("start"));
    const Mounted mounted(disk.path(), file("mount"), GetParam(), options(0));
  } catch (const std::runtime_error& problem) {
    return problem.what();
  }
  return {};
}

// Makes the image "start".
void PowerCut::begin(const Start& start) {
  if (!start.rows) {
    copy("after", "start");
    return;
  }
  fs::remove(file("start"));
  kit::put(file("start"), {});
  fs::resize_file(file("start"), 320 << 20);
  const auto command = GetParam().make + (' ' + file("start").string()) + " 2>&1";
  if (const auto made = kit::runCommand(command); made.status != 0)
    throw std::runtime_error(made.output);
  if (*start.rows == 0)
    return;

  const LoopDevice disk(file("start"));
  const Mounted mounted(disk.path(), file("mount"), GetParam(), GetParam().options);
  std::vector<Attempt> rows;
  for (std::int64_t i = 0; i < *start.rows; ++i) {
    rows.push_back(row(Drill::frequency, i % 27, i % 2 == 0, 0.5, Date::now()));
    rows.back().difficulty = static_cast<double>(i);
  }
  kit::put(start.earlier ? *location().earlierFile : location().file(),
           Coding::encode(Stored{rows, {}, {}}).value());
}

std::vector<Cut> PowerCut::cutsBetween(Clock::time_point begin, Clock::time_point end,
                                       const std::vector<DiskEvent>& log) {
  std::vector<Clock::time_point> events;
  for (const DiskEvent& event : log)
    if (event.time >= begin && event.time <= end)
      events.push_back(event.time);
  std::vector<Cut> cuts;
  for (int i = 0; i < cutsInASession(); ++i) {
    Cut cut{.moment = begin};
    // At a random time, or right after a random operation of the disk.
    if (i % 2 == 0 || events.empty())
      cut.moment = begin + Clock::duration(std::uniform_int_distribution<Clock::rep>(
                               0, (end - begin).count())(random_));
    else
      cut.moment =
          events[std::uniform_int_distribution<std::size_t>(0, events.size() - 1)(random_)];
    constexpr CachedWrites fates[] = {CachedWrites::kept, CachedWrites::lost, CachedWrites::torn};
    cut.cached = fates[static_cast<std::size_t>(cuts_ + i) % 3];
    cuts.push_back(cut);
  }
  return cuts;
}

void PowerCut::check(const Cut& cut, const std::vector<DiskEvent>& log, const AnswerLog& answers) {
  copy("start", "after");
  kit::cutPower(file("after"), log, cut.moment, cut.cached, random_);
  copy("after", "disk");
  ++cuts_;
  const std::int64_t acknowledged = answers.acknowledgedBy(cut.moment);
  const std::int64_t required =
      std::max(answers.before(), answers.acknowledgedBy(cut.moment - cut.mayLose));

  const LoopDevice disk(file("disk"));
  const Mounted mounted(disk.path(), file("mount"), GetParam(), GetParam().options);
  EXPECT_GE(Neighbour::fileIn(file("mount")), cut.neighbour) << "the disk lost what it flushed";
  const std::string files = listing(location().directory);
  std::int64_t found = 0;
  {
    Profile profile(location());
    found = answersIn(profile);
    recordNumbered(profile, found);
  }
  if (found < answers.before())
    ++lostEarlier_;
  else if (found < acknowledged)
    longestLoss_ = std::max(longestLoss_, cut.moment - answers.timeOfAnswer(found));
  failed_ += found < required || found > acknowledged + 1;
  EXPECT_GE(found, required) << session_ << ", cached writes " << nameOf(cut.cached) << ", "
                             << acknowledged << " acknowledged; files: " << files;
  EXPECT_LE(found, acknowledged + 1) << session_;
  EXPECT_EQ(answersIn(Profile(location())), found + 1) << "the next answer, " << session_;
}

void PowerCut::practise(std::size_t session) {
  const Start& start = starts[session];
  const bool isClosed = session % 2 == 1; // otherwise killed
  // An fsync takes three to four flushes. Closing waits for disks that are not too slow.
  constexpr int flushTimes[] = {10, 10, 100, 35};
  const milliseconds flushTime(flushTimes[session % std::size(flushTimes)]);
  session_ = std::string("session ") + std::to_string(session) + " from " + start.name;
  begin(start);
  copy("start", "disk");
  fs::remove(file("answers"));
  AnswerLog answers(file("answers"));

  std::vector<DiskEvent> log;
  Neighbour::Flushes flushes;
  Clock::time_point begun, ended;
  {
    LoggedDisk disk(file("disk"), flushTime);
    const Mounted mounted(disk.device(), file("mount"), GetParam(), options(session));
    Neighbour neighbour(file("mount"));
    Writer writer(data(), file("answers"), random_(), isClosed ? 5 : 0);
    kit::waitUntil([&] { return answers.acknowledgedBy(Clock::now()) > answers.before(); },
                   "an answer is recorded");
    begun = Clock::now();
    if (isClosed) {
      EXPECT_EQ(writer.end(), 0);
    } else {
      std::this_thread::sleep_for(std::chrono::seconds(5));
      writer.kill();
    }
    ended = Clock::now();
    flushes = neighbour.ended();
    log = disk.log();
  }
  auto cuts = cutsBetween(begun, ended, log);
  longestFlush_ = std::max(longestFlush_, flushes.longest());
  for (Cut& cut : cuts)
    cut.mayLose = std::chrono::seconds(1) + flushes.longest();
  if (isClosed)
    cuts.push_back({ended, CachedWrites::lost}); // closing waits for the disk
  for (Cut& cut : cuts)
    cut.neighbour = flushes.fileAt(cut.moment);
  std::sort(cuts.begin(), cuts.end(),
            [](const Cut& a, const Cut& b) { return a.moment < b.moment; });
  for (const Cut& cut : cuts)
    check(cut, log, answers);
}

TEST_P(PowerCut, LosesAtMostTheLastSecondAndOneFlush) {
  for (std::size_t session = 0; session < std::size(starts); ++session)
    practise(session);
  std::printf("%s: %d cuts, %d with a wrong number of answers, %d that lost answers of earlier "
              "sessions. Otherwise the longest loss was %.2f s. The longest flush took %.2f s\n",
              GetParam().name, cuts_, failed_, lostEarlier_, inSeconds(longestLoss_),
              inSeconds(longestFlush_));
  std::fflush(stdout);
}

INSTANTIATE_TEST_SUITE_P(
    On, PowerCut,
    ::testing::Values(FileSystem{"ext4", "ext4",
                                 "mkfs.ext4 -q -F -E lazy_itable_init=0,lazy_journal_init=0",
                                 "data=ordered", "commit=1"},
                      FileSystem{"ext4_noauto_da_alloc", "ext4",
                                 "mkfs.ext4 -q -F -E lazy_itable_init=0,lazy_journal_init=0",
                                 "noauto_da_alloc", "commit=1"},
                      FileSystem{"xfs", "xfs", "mkfs.xfs -q -f", "nodiscard", ""},
                      FileSystem{"btrfs", "btrfs", "mkfs.btrfs -q -f", "nodiscard", "commit=1"},
                      FileSystem{"f2fs", "f2fs", "mkfs.f2fs -q -f", "nodiscard", ""}),
    [](const auto& system) { return system.param.name; });

} // namespace
} // namespace velto
