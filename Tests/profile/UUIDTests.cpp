#include "UUID.h"

#include "kit/RecordTesting.h"

#include <set>

namespace velto {
namespace {

TEST(UUID, ARandomOneIsOfVersionFourAndTheStandardVariant) {
  std::set<std::string> seen;
  for (int i = 0; i < 1000; ++i) {
    const std::string text = UUID::random().string();
    EXPECT_EQ(text[14], '4') << text;
    EXPECT_NE(std::string("89AB").find(text[19]), std::string::npos) << text;
    seen.insert(text);
  }
  EXPECT_EQ(seen.size(), 1000U);
}

TEST(UUID, EveryFreeBitIsDrawn) {
  UUID everSet, everClear;
  for (int i = 0; i < 200; ++i) {
    const UUID uuid = UUID::random();
    for (std::size_t b = 0; b < uuid.bytes.size(); ++b) {
      everSet.bytes[b] = static_cast<std::uint8_t>(everSet.bytes[b] | uuid.bytes[b]);
      everClear.bytes[b] = static_cast<std::uint8_t>(everClear.bytes[b] | ~uuid.bytes[b]);
    }
  }
  EXPECT_EQ(everSet.string(), "FFFFFFFF-FFFF-4FFF-BFFF-FFFFFFFFFFFF");
  EXPECT_EQ(everClear.string(), "FFFFFFFF-FFFF-BFFF-7FFF-FFFFFFFFFFFF");
}

TEST(UUID, IsWrittenInUpperCaseAndReadInEither) {
  const std::string text = "0123ABCD-4567-89AB-CDEF-00FF10EE20DD";
  EXPECT_EQ(UUID::fromString(text).value().string(), text);
  EXPECT_EQ(UUID::fromString("0123abcd-4567-89aB-cdef-00ff10ee20dd").value().string(), text);
}

TEST(UUID, NothingElseIsRead) {
  for (const char* text :
       {"", "0123ABCD", "0123ABCD-4567-89AB-CDEF-00FF10EE20D",
        "0123ABCD-4567-89AB-CDEF-00FF10EE20DDA", "0123ABCD-4567-89AB-CDEF-00FF10EE20DG",
        "0123ABCD04567-89AB-CDEF-00FF10EE20DD", "0123ABCD-4567-89AB-CDEF-00FF10EE2-DD",
        "{123ABCD-4567-89AB-CDEF-00FF10EE20D}", " 123ABCD-4567-89AB-CDEF-00FF10EE20DD",
        "0123ABCD456789ABCDEF00FF10EE20DD"})
    EXPECT_FALSE(UUID::fromString(text)) << text;
}

RC_GTEST_PROP(UUID, TextReadsBackTheSame, ()) {
  UUID uuid;
  for (auto& byte : uuid.bytes)
    byte = *rc::gen::arbitrary<std::uint8_t>();
  RC_ASSERT(UUID::fromString(uuid.string()) == uuid);
}

} // namespace
} // namespace velto
