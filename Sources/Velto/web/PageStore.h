// The practice record of the page.
#pragma once

#include "PageHost.h"
#include "RecordStore.h"

#include <cstddef>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace velto {

// Gives the bytes of each save to the host, which keeps them. Other pages may keep theirs in the
// same place: the host then refuses to replace them, and the records are merged.
class PageStore final : public RecordStore {
public:
  // `kept` is what the host kept last; empty if nothing. `detailRows` as in Profile. `host`
  // outlives the store.
  PageStore(PageHost& host, std::string kept, std::size_t detailRows)
      : host_(host), kept_(std::move(kept)), detailRows_(detailRows) {}

  // True if `bytes` are a record.
  [[nodiscard]] static bool isRecord(std::string_view bytes);

  // True until the host has said how the latest save ended.
  [[nodiscard]] bool isSaving() const { return isSaving_; }
  // The host has kept it.
  void isKept() {
    isSaving_ = false;
    unsaved_.clear();
  }
  // The host could not keep it.
  void hasFailed() { isSaving_ = false; }
  // Merges another record with the latest save, and saves the result. False if `bytes` are no
  // record.
  bool merge(std::string_view bytes);

  [[nodiscard]] std::optional<Stored> load() override;
  void add(const Attempt& attempt) override { unsaved_.push_back(attempt); }
  void overwriteNext() override { unsaved_.clear(); }
  void save(const Stored& stored) override;
  [[nodiscard]] std::optional<Stored> takeMerged(const Stored& stored) override;
  bool wait(std::chrono::milliseconds) override { return true; }
  [[nodiscard]] const std::filesystem::path& file() const override { return file_; }

private:
  PageHost& host_;
  std::string kept_; // until it is loaded
  const std::size_t detailRows_;
  Stored latest_; // loaded or saved
  std::vector<Attempt> unsaved_;
  bool isSaving_ = false;
  std::optional<Stored> merged_; // not taken yet
  const std::filesystem::path file_ = "profile.json";
};

} // namespace velto
