#include "RecordCheck.h"

#include "Coding.h"
#include "DateText.h"
#include "FolderLock.h"
#include "Folders.h"
#include "JSONWriter.h"
#include "SafeFile.h"

#include <algorithm>

namespace velto {

namespace {

namespace fs = std::filesystem;
using Contents = RecordCheck::Contents;
using Kind = RecordFile::Copy::Kind;

// A save writes the file and two copies of it, each with some answers twice.
constexpr std::uintmax_t copiesOfASave = 3;
constexpr std::uintmax_t bytesBeside = 65536;

RecordCheck::Reading readingOf(const SafeFile::Reading& reading, bool isDecoded) {
  if (reading.state == SafeFile::Reading::State::missing)
    return RecordCheck::Reading::missing;
  if (reading.state != SafeFile::Reading::State::complete)
    return RecordCheck::Reading::unreadable;
  return isDecoded ? RecordCheck::Reading::readable : RecordCheck::Reading::damaged;
}

// The folder, or the nearest one above it that exists.
fs::path existing(fs::path folder) {
  folder = Folders::absolute(folder);
  while (!Folders::exists(folder) && folder.has_relative_path())
    folder = folder.parent_path();
  return folder;
}

std::string dayOf(const std::optional<Date>& date) {
  const auto text = date ? DateText::utc(*date) : std::nullopt;
  return text ? text->substr(0, text->find('T')) : "an unknown day";
}

std::string phrase(const Contents& contents) {
  if (contents.answers == 0)
    return "no answers";
  const std::string first = dayOf(contents.oldest), last = dayOf(contents.newest);
  return std::to_string(contents.answers) + (contents.answers == 1 ? " answer" : " answers") +
         (first == last ? " of " + first : " from " + first + " to " + last);
}

std::string phrase(const std::optional<Contents>& contents) {
  return contents ? phrase(*contents) : "damaged";
}

std::string phrase(Kind kind) {
  switch (kind) {
  case Kind::running:
    return "copy of a running Velto";
  case Kind::left:
    return "copy that Velto left";
  case Kind::putAside:
    break;
  }
  return "put aside";
}

std::string_view wordOf(Kind kind) {
  return kind == Kind::running ? "running" : kind == Kind::left ? "left" : "putAside";
}

std::string_view wordOf(RecordCheck::Reading reading) {
  using enum RecordCheck::Reading;
  switch (reading) {
  case missing:
    return "missing";
  case readable:
    return "readable";
  case damaged:
    return "damaged";
  case unreadable:
    break;
  }
  return "unreadable";
}

std::string readingPhrase(const RecordCheck& check) {
  using enum RecordCheck::Reading;
  switch (check.reading) {
  case missing:
    return "no record yet";
  case readable:
    return phrase(check.contents);
  case damaged:
    return "damaged: it cannot be read";
  case unreadable:
    break;
  }
  return "it cannot be read";
}

std::string writingPhrase(const RecordCheck& check) {
  if (check.isLocked)
    return "a program is saving it";
  if (!check.isWritable)
    return "it cannot be written: no permission";
  return check.hasRoom ? "it can be written" : "it cannot be written: the disk is full";
}

void write(JSON::Writer& writer, std::string_view key, const std::optional<Date>& date) {
  if (const auto text = date ? DateText::utc(*date) : std::nullopt) {
    writer.key(key);
    writer.string(*text);
  }
}

void write(JSON::Writer& writer, const std::optional<Contents>& contents) {
  if (!contents)
    return;
  writer.key("answers");
  writer.integer(static_cast<std::uint64_t>(contents->answers));
  write(writer, "oldest", contents->oldest);
  write(writer, "newest", contents->newest);
}

} // namespace

Contents Contents::of(const Stored& stored) {
  Contents contents{.answers = stored.attempts.size(), .oldest = {}, .newest = {}};
  if (stored.attempts.empty())
    return contents;
  const auto [first, last] = std::minmax_element(
      stored.attempts.begin(), stored.attempts.end(), [](const Attempt& a, const Attempt& b) {
        return a.date.secondsSinceReferenceDate < b.date.secondsSinceReferenceDate;
      });
  contents.oldest = first->date;
  contents.newest = last->date;
  return contents;
}

RecordCheck RecordCheck::of(const ProfileLocation& location) {
  RecordCheck check;
  check.file = Folders::absolute(location.file());
  const SafeFile::Reading reading = SafeFile::read(check.file);
  const auto stored = Coding::decodeStored(reading.bytes);
  check.reading = readingOf(reading, stored.has_value());
  if (stored)
    check.contents = Contents::of(*stored);

  const fs::path folder = existing(location.directory);
  check.isWritable = Folders::isWritable(folder) &&
                     (check.reading == Reading::missing || Folders::isWritable(check.file));
  check.hasRoom = Folders::freeBytes(folder) >= copiesOfASave * reading.bytes.size() + bytesBeside;
  check.isLocked =
      FolderLock(check.file, FolderLock::Use::reading, std::chrono::milliseconds(0)).isRefused();
  for (const RecordFile::Copy& copy : RecordFile::copies(check.file))
    check.beside.push_back(
        {copy.path.filename().string(), copy.kind,
         copy.record ? std::optional(Contents::of(*copy.record)) : std::nullopt});
  if (const auto candidate = RecordFile::candidate(location)) {
    check.restoredFrom = candidate->source.filename().string();
    check.restored = Contents::of(candidate->record);
  }
  return check;
}

bool RecordCheck::passes() const {
  return isWritable && hasRoom && (reading == Reading::missing || reading == Reading::readable);
}

std::string RecordCheck::words() const {
  std::string text =
      file.string() + "\n  " + readingPhrase(*this) + "; " + writingPhrase(*this) + "\n";
  for (const Beside& one : beside)
    text += one.name + "\n  " + phrase(one.kind) + ": " + phrase(one.contents) + "\n";
  if (!restored)
    return text + "velto-lab restore has nothing to bring back.\n";
  const bool isOwn = restoredFrom == file.filename();
  return text + "velto-lab restore would bring back " + phrase(*restored) +
         (isOwn ? ", as Velto does at its next start.\n" : ": " + restoredFrom + "\n");
}

std::string RecordCheck::json() const {
  JSON::Writer writer;
  writer.beginObject();
  writer.key("file");
  writer.string(file.string());
  writer.key("reading");
  writer.string(wordOf(reading));
  write(writer, contents);
  writer.key("writable");
  writer.boolean(isWritable);
  writer.key("room");
  writer.boolean(hasRoom);
  writer.key("locked");
  writer.boolean(isLocked);
  writer.key("beside");
  writer.beginArray();
  for (const Beside& one : beside) {
    writer.beginObject();
    writer.key("name");
    writer.string(one.name);
    writer.key("kind");
    writer.string(wordOf(one.kind));
    write(writer, one.contents);
    writer.endObject();
  }
  writer.endArray();
  if (restored) {
    writer.key("restore");
    writer.beginObject();
    writer.key("from");
    writer.string(restoredFrom);
    write(writer, restored);
    writer.endObject();
  }
  writer.endObject();
  return writer.finish().value_or("{}") + "\n";
}

} // namespace velto
