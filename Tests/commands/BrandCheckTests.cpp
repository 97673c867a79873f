// Runs the brand check in home directories and build trees laid out for each test.

#include "kit/Command.h"
#include "kit/Files.h"

#include <gtest/gtest.h>

#include <cmath>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

namespace {

namespace fs = std::filesystem;

const fs::path program = VELTO_PROGRAM;
const fs::path face = program.parent_path() / "../share/velto/MORLADisplay-Regular.otf";

// A home directory, and a copy of the program whose resources the test lays out.
class BrandCheck : public testing::Test {
protected:
  void SetUp() override {
    fs::create_directories(folder() / "tree/bin");
    fs::copy_file(program, folder() / "tree/bin/velto");
  }

  void shipFace() const {
    fs::create_directories(shippedFace().parent_path());
    fs::copy_file(face, shippedFace());
  }
  [[nodiscard]] fs::path shippedFace() const {
    return folder() / "tree/share/velto/MORLADisplay-Regular.otf";
  }

  [[nodiscard]] fs::path master() const {
    return folder() / "home/Projects/morla/company/morla-brand/type/MORLADisplay-Regular.otf";
  }
  void layMaster() const {
    fs::create_directories(master().parent_path());
    fs::copy_file(face, master());
  }

  // Runs the check without a display.
  [[nodiscard]] velto::kit::CommandResult check() const { return check(folder() / "home"); }
  [[nodiscard]] velto::kit::CommandResult check(const fs::path& home) const {
    return velto::kit::runCommand("cd " + folder().string() +
                                  "; env -u DISPLAY -u WAYLAND_DISPLAY HOME=" + home.string() +
                                  " tree/bin/velto --brand-check 2>&1");
  }

private:
  [[nodiscard]] const fs::path& folder() const { return scratch_.path(); }

  velto::kit::ScratchFolder scratch_;
};

std::vector<std::string> lines(const std::string& text) {
  std::vector<std::string> result;
  std::istringstream stream(text);
  for (std::string line; std::getline(stream, line);)
    result.push_back(line);
  return result;
}

const std::string bundleFound =
    "  PASS  wordmark face is in the bundle                MORLADisplay-Regular.otf";
const std::string usable = "  PASS  face is usable by the app                     MORLA Display";
const std::string resolves =
    "  PASS  custom face resolves (not silently substituted)  MORLADisplay-Regular";
const std::string unmodified = "bundled face is the brand repo's, unmodified  ";

} // namespace

TEST_F(BrandCheck, PassesWithTheFaceAndItsMaster) {
  shipFace();
  layMaster();
  const auto result = check();
  const auto text = lines(result.output);
  ASSERT_EQ(text.size(), 7U) << result.output;
  EXPECT_EQ(text[0], "── brand");
  EXPECT_EQ(text[1], bundleFound);
  const std::string digest =
      velto::kit::runCommand("sha256sum " + master().string()).output.substr(0, 8);
  EXPECT_EQ(text[2], "  PASS  " + unmodified + digest + "…");
  EXPECT_EQ(text[3], usable);
  EXPECT_EQ(text[4], resolves);
  EXPECT_TRUE(
      text[5].starts_with("  PASS  wordmark typesets in the brand face, not the fallback  "))
      << text[5];
  EXPECT_EQ(text[6], "  brand gate green");
  EXPECT_EQ(result.status, 0);
}

// The check uses the account's home instead, as the profile does; it has no master.
TEST_F(BrandCheck, IgnoresARelativeHome) {
  shipFace();
  layMaster();
  EXPECT_EQ(lines(check("home").output)[2], "  FAIL  " + unmodified + "brand repo copy unreadable");
}

TEST_F(BrandCheck, PrintsTheTwoWidthsThatItCompares) {
  shipFace();
  const auto result = check();
  double brand = 0;
  double system = 0;
  const std::string line = lines(result.output).at(5);
  std::istringstream detail(line.substr(line.rfind("  ") + 2));
  std::string unit, versus;
  detail >> brand >> unit >> versus >> system;
  EXPECT_GT(brand, 100);
  EXPECT_GT(system, 100);
  EXPECT_GT(std::abs(brand - system), 1);
}

TEST_F(BrandCheck, FailsWithoutTheMasterEvenIfTheFaceWorks) {
  shipFace();
  const auto result = check();
  const auto text = lines(result.output);
  ASSERT_EQ(text.size(), 7U) << result.output;
  EXPECT_EQ(text[1], bundleFound);
  EXPECT_EQ(text[2], "  FAIL  " + unmodified + "brand repo copy unreadable");
  EXPECT_EQ(text[3], usable);
  EXPECT_EQ(text[4], resolves);
  EXPECT_EQ(text[6], "  BRAND GATE RED");
  EXPECT_EQ(result.status, 1);
}

TEST_F(BrandCheck, FailsIfTheMasterDiffers) {
  shipFace();
  layMaster();
  std::ofstream(master(), std::ios::app) << '\n';
  const auto result = check();
  const auto text = lines(result.output);
  ASSERT_EQ(text.size(), 7U) << result.output;
  EXPECT_EQ(text[2], "  FAIL  " + unmodified + "SHA differs — it was re-exported or re-drawn");
  EXPECT_EQ(text[3], usable);
  EXPECT_EQ(text[6], "  BRAND GATE RED");
  EXPECT_EQ(result.status, 1);
}

TEST_F(BrandCheck, FailsWithoutTheFace) {
  layMaster();
  const auto result = check();
  const auto text = lines(result.output);
  ASSERT_EQ(text.size(), 6U) << result.output;
  EXPECT_EQ(text[1], "  FAIL  wordmark face is in the bundle                missing — run "
                     "build.sh, not swift build");
  EXPECT_EQ(text[2], "  FAIL  " + unmodified + "brand repo copy unreadable");
  EXPECT_EQ(text[3], "  FAIL  face is usable by the app                     registered flag false "
                     "— wordmark would fall back");
  EXPECT_EQ(text[4], "  FAIL  custom face resolves (not silently substituted)  nil");
  EXPECT_EQ(text[5], "  BRAND GATE RED");
  EXPECT_EQ(result.status, 1);
}

TEST_F(BrandCheck, FailsIfTheFaceIsNotAFont) {
  shipFace();
  std::ofstream(shippedFace(), std::ios::trunc) << "not a font";
  const auto result = check();
  const auto text = lines(result.output);
  ASSERT_EQ(text.size(), 6U) << result.output;
  EXPECT_EQ(text[1], bundleFound);
  EXPECT_TRUE(text[3].starts_with("  FAIL  face is usable by the app"));
  EXPECT_EQ(text[5], "  BRAND GATE RED");
  EXPECT_EQ(result.status, 1);
}
