#include "UUID.h"

#include "kit/RecordTesting.h"

#include <set>

namespace velto {
namespace {

// Only the version, 4, and the variant, binary 10, are fixed.
TEST(UUID, RandomDrawsEveryBitThatIsNotFixed) {
  std::set<std::string> seen;
  UUID everSet, everClear;
  for (int i = 0; i < 1000; ++i) {
    const UUID uuid = UUID::random();
    seen.insert(uuid.string());
    for (std::size_t b = 0; b < uuid.bytes.size(); ++b) {
      everSet.bytes[b] = static_cast<std::uint8_t>(everSet.bytes[b] | uuid.bytes[b]);
      everClear.bytes[b] = static_cast<std::uint8_t>(everClear.bytes[b] | ~uuid.bytes[b]);
    }
  }
  EXPECT_EQ(seen.size(), 1000U);
  EXPECT_EQ(everSet.string(), "FFFFFFFF-FFFF-4FFF-BFFF-FFFFFFFFFFFF");
  EXPECT_EQ(everClear.string(), "FFFFFFFF-FFFF-BFFF-7FFF-FFFFFFFFFFFF");
}

TEST(UUID, IsWrittenInUpperCaseAndReadInEither) {
  const std::string text = "0123ABCD-4567-89AB-CDEF-00FF10EE20DD";
  EXPECT_EQ(UUID::fromString(text).value().string(), text);
  EXPECT_EQ(UUID::fromString("0123abcd-4567-89aB-cdef-00ff10ee20dd").value().string(), text);
}

TEST(UUID, RejectsOtherTexts) {
  for (const char* text :
       {"", "0123ABCD", "0123ABCD-4567-89AB-CDEF-00FF10EE20D",
        "0123ABCD-4567-89AB-CDEF-00FF10EE20DDA", "0123ABCD-4567-89AB-CDEF-00FF10EE20DG",
        "0123ABCD04567-89AB-CDEF-00FF10EE20DD", "0123ABCD-4567-89AB-CDEF-00FF10EE2-DD",
        "{123ABCD-4567-89AB-CDEF-00FF10EE20D}", " 123ABCD-4567-89AB-CDEF-00FF10EE20DD",
        "0123ABCD456789ABCDEF00FF10EE20DD"})
    EXPECT_FALSE(UUID::fromString(text)) << text;
}

RC_GTEST_PROP(UUID, ReadsBackItsText, ()) {
  UUID uuid;
  for (auto& byte : uuid.bytes)
    byte = *rc::gen::arbitrary<std::uint8_t>();
  RC_ASSERT(UUID::fromString(uuid.string()) == uuid);
}

} // namespace
} // namespace velto
