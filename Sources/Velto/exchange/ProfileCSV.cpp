#include "ProfileCSV.h"

#include "NumberText.h"
#include "Numbers.h"
#include "UTF8.h"

#include <algorithm>
#include <array>
#include <map>
#include <set>
#include <type_traits>
#include <utility>

namespace velto {

namespace {

enum Column : std::uint8_t {
  kind,
  id,
  date,
  drill,
  material,
  difficulty,
  correct,
  error,
  band,
  attempts,
  hits,
  errorSum,
  consecutiveCorrect,
  reversals,
  lastDirection
};

const std::array<std::string, 15> header{
    "kind",         "id",   "date",     "drill", "material", "difficulty",         "correct",
    "error",        "band", "attempts", "hits",  "errorSum", "consecutiveCorrect", "reversals",
    "lastDirection"};

// Values of the column `kind`.
const std::string answerKind = "answer", staircaseKind = "staircase", bandKind = "band",
                  endKind = "end";

using Fields = std::array<std::string, header.size()>;

template <typename Number>
std::string textOf(Number value) {
  std::string text;
  Numbers::append(text, value);
  return text;
}

Fields fieldsOf(const Attempt& attempt) {
  Fields fields;
  fields[kind] = answerKind;
  fields[id] = attempt.id.string();
  fields[date] = textOf(attempt.date.secondsSinceReferenceDate);
  fields[drill] = attempt.drill.rawValue();
  fields[material] = attempt.material.rawValue();
  fields[difficulty] = textOf(attempt.difficulty);
  fields[correct] = std::string(1, attempt.correct ? '1' : '0');
  fields[error] = textOf(attempt.error);
  if (attempt.bandIndex)
    fields[band] = textOf(*attempt.bandIndex);
  return fields;
}

Fields fieldsOf(const std::string& name, const Staircase& staircase) {
  Fields fields;
  fields[kind] = staircaseKind;
  fields[drill] = name;
  fields[difficulty] = textOf(staircase.difficulty);
  fields[consecutiveCorrect] = textOf(staircase.consecutiveCorrect);
  fields[reversals] = textOf(staircase.reversals);
  fields[lastDirection] = textOf(staircase.lastDirection);
  return fields;
}

Fields fieldsOf(std::int64_t index, const BandRoll& roll) {
  Fields fields;
  fields[kind] = bandKind;
  fields[band] = textOf(index);
  fields[attempts] = textOf(roll.attempts);
  fields[hits] = textOf(roll.hits);
  fields[errorSum] = textOf(roll.errorSum);
  return fields;
}

// The fields of one row, each of which must be asked for or empty.
class Reader {
public:
  explicit Reader(const CSV::Row& row) : row_(row) {
    if (row.fields.size() != header.size())
      refuse(std::to_string(row.fields.size()) + " fields instead of " +
             std::to_string(header.size()));
  }

  const std::string& text(Column column) {
    asked_.insert(column);
    return row_.fields[column];
  }

  double real(Column column) { return checked(column, NumberText::real(text(column)), "number"); }

  std::int64_t integer(Column column) {
    return checked(column, NumberText::integer(text(column)), "whole number");
  }

  bool isOne(Column column) {
    if (text(column) != "0" && text(column) != "1")
      refuse(header[column] + " is neither 0 nor 1");
    return text(column) == "1";
  }

  template <typename Value>
  Value checked(Column column, const std::optional<Value>& value, const std::string& what) {
    if (!value)
      refuse(header[column] + " is no " + what);
    return *value;
  }

  // Call once all fields that the row has have been asked for.
  void finish() const {
    for (std::size_t column = 0; column < header.size(); ++column)
      if (!asked_.contains(column) && !row_.fields[column].empty())
        refuse(header[column] + " is not empty");
  }

  [[noreturn]] void refuse(const std::string& problem) const {
    throw CSV::Damaged(row_.line, problem);
  }

private:
  const CSV::Row& row_;
  std::set<std::size_t> asked_{kind};
};

Attempt answerIn(Reader& reader) {
  Attempt attempt;
  attempt.id = reader.checked(id, UUID::fromString(reader.text(id)), "UUID");
  attempt.date = {reader.real(date)};
  attempt.drill = reader.checked(drill, Drill::fromRawValue(reader.text(drill)), "drill");
  attempt.material =
      reader.checked(material, Material::fromRawValue(reader.text(material)), "material");
  attempt.difficulty = reader.real(difficulty);
  attempt.correct = reader.isOne(correct);
  attempt.error = reader.real(error);
  if (!reader.text(band).empty())
    attempt.bandIndex = reader.integer(band);
  return attempt;
}

std::pair<std::string, Staircase> staircaseIn(Reader& reader) {
  const std::string name = reader.text(drill);
  if (!UTF8::isValid(name))
    reader.refuse("drill is not UTF-8");
  return {name,
          {reader.real(difficulty), reader.integer(consecutiveCorrect), reader.integer(reversals),
           reader.integer(lastDirection)}};
}

std::pair<std::int64_t, BandRoll> bandIn(Reader& reader) {
  const std::int64_t index = reader.integer(band);
  return {index, {reader.integer(attempts), reader.integer(hits), reader.real(errorSum)}};
}

// Reads the rows behind the header.
class RecordReader {
public:
  void read(const CSV::Row& row) {
    Reader reader(row);
    const std::string& what = reader.text(kind);
    if (what == answerKind)
      add(reader, answerIn(reader));
    else if (what == staircaseKind)
      refuseSecond(reader, stored_.staircases.insert(staircaseIn(reader)).second);
    else if (what == bandKind)
      refuseSecond(reader, stored_.lifetime.insert(bandIn(reader)).second);
    else if (what == endKind)
      end(reader);
    else
      reader.refuse("kind is neither answer, staircase, band nor end");
    reader.finish();
    ++rows_;
  }

  [[nodiscard]] bool hasEnded() const { return hasEnded_; }
  Stored take() { return std::move(stored_); }

private:
  void add(const Reader& reader, const Attempt& attempt) {
    refuseSecond(reader, ids_.insert(attempt.id.bytes).second);
    stored_.attempts.push_back(attempt);
  }

  void end(Reader& reader) {
    if (reader.integer(attempts) != rows_)
      reader.refuse(textOf(rows_) + " rows instead of " + reader.text(attempts));
    hasEnded_ = true;
  }

  static void refuseSecond(const Reader& reader, bool isFirst) {
    if (!isFirst)
      reader.refuse("there already is such a row");
  }

  Stored stored_;
  std::set<std::array<std::uint8_t, 16>> ids_;
  std::int64_t rows_ = 0;
  bool hasEnded_ = false;
};

} // namespace

std::string ProfileCSV::write(const Stored& stored) {
  std::string text;
  CSV::append(text, header);
  std::int64_t rows = 0;
  const auto add = [&](const Fields& fields) {
    CSV::append(text, fields);
    ++rows;
  };
  for (const Attempt& attempt : stored.attempts)
    add(fieldsOf(attempt));
  for (const auto& [name, staircase] : stored.staircases)
    add(fieldsOf(name, staircase));
  for (const auto& [index, roll] : stored.lifetime)
    add(fieldsOf(index, roll));
  Fields end;
  end[kind] = endKind;
  end[attempts] = textOf(rows);
  CSV::append(text, end);
  return text;
}

Stored ProfileCSV::read(std::string_view text) {
  const std::vector<CSV::Row> rows = CSV::parse(text);
  if (rows.empty() ||
      !std::equal(rows[0].fields.begin(), rows[0].fields.end(), header.begin(), header.end()))
    throw CSV::Damaged(1, "not the header of a practice record");
  RecordReader reader;
  for (std::size_t i = 1; i < rows.size(); ++i) {
    if (reader.hasEnded())
      throw CSV::Damaged(rows[i].line, "a row behind the last one");
    reader.read(rows[i]);
  }
  if (!reader.hasEnded())
    throw CSV::Damaged(rows.back().line, "the file ends here, without its last row");
  return reader.take();
}

} // namespace velto
