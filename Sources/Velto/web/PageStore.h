// The practice record of the page.
#pragma once

#include "PageHost.h"
#include "RecordStore.h"

#include <filesystem>
#include <optional>
#include <string>

namespace velto {

// Gives the bytes of each save to the host, which keeps them.
class PageStore final : public RecordStore {
public:
  // `kept` is what the host kept last; empty if nothing. `host` outlives the store.
  PageStore(PageHost& host, std::string kept) : host_(host), kept_(std::move(kept)) {}

  [[nodiscard]] std::optional<Stored> load() override;
  void add(const Attempt&) override {}
  void overwriteNext() override {}
  void save(const Stored& stored) override;
  [[nodiscard]] std::optional<Stored> takeMerged(const Stored&) override { return std::nullopt; }
  bool wait(std::chrono::milliseconds) override { return true; }
  [[nodiscard]] const std::filesystem::path& file() const override { return file_; }

private:
  PageHost& host_;
  std::string kept_; // until it is loaded
  const std::filesystem::path file_ = "profile.json";
};

} // namespace velto
