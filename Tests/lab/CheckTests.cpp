// velto-lab check.
#include "Coding.h"
#include "LabRunner.h"
#include "kit/RecordTesting.h"

namespace velto {
namespace {

using testing::LabRunner;
using testing::put;

TEST(LabCheck, TellsARecordFromNoneAndFromAnUnreadableOne) {
  const LabRunner lab;
  const std::string file = lab.record().string();
  const auto none = lab.run({"check"});
  EXPECT_EQ(none.status, 0);
  EXPECT_EQ(none.out, file + ": no record yet\n");

  put(lab.record(), "{\"attempts\":[],\"staircases\":{}}");
  EXPECT_EQ(lab.run({"check"}).out, file + ": 0 answers\n");
  EXPECT_EQ(lab.run({"check", "--json"}).out,
            "{\"file\":\"" + file + "\",\"exists\":true,\"readable\":true,\"answers\":0}\n");

  put(lab.record(), "{\"attempts\":[]");
  const auto damaged = lab.run({"check"});
  EXPECT_EQ(damaged.status, 1);
  EXPECT_EQ(damaged.out, file + ": cannot be read\n");
}

} // namespace
} // namespace velto
