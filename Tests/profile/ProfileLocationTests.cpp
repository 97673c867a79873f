#include "ProfileLocation.h"

#include "kit/RecordTesting.h"

#include <map>

namespace velto {
namespace {

using Variables = std::map<std::string, std::string>;

Environment environment(const Variables& variables, const std::optional<std::string>& accountHome) {
  return {[variables](const char* name) -> std::optional<std::string> {
            const auto found = variables.find(name);
            return found == variables.end() ? std::nullopt : std::optional(found->second);
          },
          [accountHome] { return accountHome; }};
}

ProfileLocation resolve(const Variables& variables,
                        const std::optional<std::string>& accountHome = std::nullopt) {
  return ProfileLocation::resolve(environment(variables, accountHome));
}

ProfileLocation inData(const std::string& data) {
  return {data + "/MORLA Velto", data + "/Velto/profile.json"};
}

TEST(ProfileLocation, TheVariableNamesTheFolderWithoutAnEarlierFile) {
  const auto location =
      resolve({{"VELTO_PROFILE_DIR", "/a/b"}, {"XDG_DATA_HOME", "/x"}, {"HOME", "/h"}}, "/acc");
  EXPECT_EQ(location, (ProfileLocation{"/a/b", std::nullopt}));
  EXPECT_EQ(location.file(), "/a/b/profile.json");
}

TEST(ProfileLocation, TheVariableMayBeRelativeOrEmpty) {
  EXPECT_EQ(resolve({{"VELTO_PROFILE_DIR", "rel/dir"}}).file(), "rel/dir/profile.json");
  EXPECT_EQ(resolve({{"VELTO_PROFILE_DIR", ""}, {"HOME", "/h"}}).file(), "profile.json");
}

TEST(ProfileLocation, DefaultsToTheUsersDataDirectory) {
  EXPECT_EQ(resolve({{"XDG_DATA_HOME", "/x"}, {"HOME", "/h"}}, "/acc"), inData("/x"));
  EXPECT_EQ(resolve({{"HOME", "/h"}}, "/acc"), inData("/h/.local/share"));
  EXPECT_EQ(resolve({}, "/acc"), inData("/acc/.local/share"));
}

TEST(ProfileLocation, RelativeAndEmptyPathsAreIgnored) {
  EXPECT_EQ(resolve({{"XDG_DATA_HOME", "x"}, {"HOME", "/h"}}), inData("/h/.local/share"));
  EXPECT_EQ(resolve({{"XDG_DATA_HOME", ""}, {"HOME", "/h"}}), inData("/h/.local/share"));
  EXPECT_EQ(resolve({{"HOME", ""}}, "/acc"), inData("/acc/.local/share"));
  EXPECT_EQ(resolve({{"HOME", "h"}}, "/acc"), inData("/acc/.local/share"));
}

TEST(ProfileLocation, QueriesTheAccountOnlyAsALastResort) {
  Environment asked = environment({{"HOME", "/h"}}, std::nullopt);
  asked.accountHome = []() -> std::optional<std::string> {
    ADD_FAILURE() << "asked the account database";
    return std::nullopt;
  };
  EXPECT_EQ(ProfileLocation::resolve(asked), inData("/h/.local/share"));
}

TEST(ProfileLocationDeathTest, DiesWithoutAnyDataDirectory) {
  EXPECT_DEATH(static_cast<void>(resolve({})), "^Velto: no directory for the user's data");
  EXPECT_DEATH(static_cast<void>(resolve({{"HOME", ""}, {"XDG_DATA_HOME", "x"}}, "")), "^Velto: ");
}

TEST(ProfileLocation, ProcessEnvironmentReadsVariablesAndAccount) {
  const testing::ScopedVariable set("VELTO_PROFILE_DIR", "/somewhere/else");
  const testing::ScopedVariable unset("XDG_DATA_HOME", std::nullopt);
  const Environment process = Environment::ofProcess();
  EXPECT_EQ(process.variable("VELTO_PROFILE_DIR"), "/somewhere/else");
  EXPECT_EQ(process.variable("XDG_DATA_HOME"), std::nullopt);
  EXPECT_TRUE(process.accountHome().value_or("/").starts_with("/"));
}

} // namespace
} // namespace velto
