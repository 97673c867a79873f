// Practice in a browser: the session behind the page, its commands, and what it shows.
#pragma once

#include "JSONWriter.h"
#include "PageHost.h"
#include "PageKeys.h"
#include "Session.h"

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace velto {

class PageCourse;
class PageEngine;
class PageStore;

// Reads and changes one session. The page calls a command, then draws state() anew. Lengths are in
// CSS pixels, which the window calls points.
//
// The page's thread only. No function waits.
class Page {
public:
  struct Start {
    Drill drill = Drill::frequency;
    Session::Trials trials = Session::Trials::standard;
    double secondsSince1970 = 0; // as for Session
    std::string record;          // what the host kept last; empty if nothing
  };

  // What the keyboard's focus is on.
  enum class Focus : std::uint8_t { elsewhere, drills, answer, slots, materials };

  // `host` outlives the page.
  Page(PageHost& host, Start start);

  // Commands. Each is a no-op where the window would not offer it, and for an index that is out of
  // range.
  void chooseDrill(int index);
  void chooseMaterial(int index);
  void chooseSlot(int index);
  // Answers with a slot.
  void answerSlot(int index);
  // Answers with the value at `x` on a scale `width` wide.
  void answerAt(double x, double width);
  // Answers with the value on the scale that is nearest to `value`.
  void answerNearest(double value);
  // The action of the primary button. The verdict on an answer shows once recordKept() or
  // recordFailed() has been called.
  void advance();
  // Handles a key press; false if it means nothing here.
  bool press(const PageKeys::Press& press, Focus focus);

  // Silences playback until resume().
  void suspend() { session_.suspend(); }
  void resume() { session_.resume(); }

  // Takes the slots that PageHost::render() was to make of the trial with this seed.
  void takeRender(std::uint64_t seed, std::vector<Slot> slots);
  // How PageHost::openSound() ended. An open output can fail later, too.
  void soundOpened(double latencySeconds);
  void soundFailed(std::string reason);

  // The host has kept what keepRecord() gave it last, or cannot keep it.
  void recordKept();
  void recordFailed();
  // Merges another record with this one, and has the result kept. False if `bytes` are no record.
  bool mergeRecord(std::string_view bytes);

  // What the window shows, as JSON.
  [[nodiscard]] std::string state() const;
  // Where ticks, markers and chips of the answer's scale are, as JSON. `answerChip` and `truthChip`
  // are the widths of the chips, `devicePixelRatio` is pixels per CSS pixel.
  [[nodiscard]] std::string strip(double width, double answerChip, double truthChip,
                                  double devicePixelRatio) const;
  // The shares of `width` that the slots to answer with have, as JSON.
  [[nodiscard]] std::string slotShares(double width, double devicePixelRatio) const;
  // The weakness map's shares of `width`, as JSON.
  [[nodiscard]] static std::string mapShares(double width, double devicePixelRatio);
  // The points of the difficulty curve, as JSON.
  [[nodiscard]] std::string curve(double width, double height) const;
  // The texts that never change by their names in Wording, as JSON. `primary` is a list: all that
  // the primary button may show.
  [[nodiscard]] static std::string words();
  // The outline of a box with continuous corners, and its frame `width` wide, as JSON; see
  // PageOutline.
  [[nodiscard]] static std::string outline(double radius, double width);
  // The colours of both palettes as CSS, as JSON.
  [[nodiscard]] static std::string palettes();

  [[nodiscard]] const Session& session() const { return session_; }

private:
  [[nodiscard]] std::unique_ptr<Course> course(std::string record);
  [[nodiscard]] static std::unique_ptr<Player> player(PageHost& host, PageEngine*& engine);
  [[nodiscard]] bool isAnswerable() const;
  [[nodiscard]] bool canAdvance() const;
  void writeTrial(JSON::Writer& json) const;
  void writeAnswer(JSON::Writer& json) const;
  void writeProgress(JSON::Writer& json) const;
  void answer(double value);
  void moveFocused(Move move, Focus focus);

  struct Waiting;

  PageHost& host_;
  PageEngine* engine_ = nullptr; // the player's
  PageStore* store_ = nullptr;   // the record's
  PageCourse* course_ = nullptr; // the session's
  std::shared_ptr<Waiting> waiting_;
  Session session_;
};

} // namespace velto
