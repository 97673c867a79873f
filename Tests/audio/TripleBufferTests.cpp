#include "TripleBuffer.h"

#include <gtest/gtest.h>
#include <thread>

namespace velto {
namespace {

TEST(TripleBuffer, FetchesNothingBeforeTheFirstValue) {
  TripleBuffer<int> value;
  EXPECT_EQ(value.fetch(), nullptr);
}

TEST(TripleBuffer, FetchesEachValueOnce) {
  TripleBuffer<int> value;
  value.publish(1);
  const int* fetched = value.fetch();
  ASSERT_NE(fetched, nullptr);
  EXPECT_EQ(*fetched, 1);
  EXPECT_EQ(value.fetch(), nullptr);
}

TEST(TripleBuffer, FetchesTheNewestValue) {
  TripleBuffer<int> value;
  for (int i = 0; i < 1000; ++i)
    value.publish(i);
  const int* fetched = value.fetch();
  ASSERT_NE(fetched, nullptr);
  EXPECT_EQ(*fetched, 999);
}

TEST(TripleBuffer, AFetchedValueStaysWhileNewerOnesArePublished) {
  TripleBuffer<int> value;
  value.publish(1);
  const int* fetched = value.fetch();
  for (int i = 2; i < 10; ++i)
    value.publish(i);
  ASSERT_NE(fetched, nullptr);
  EXPECT_EQ(*fetched, 1);
}

// No value is torn, none is older than the one before, and the last one always arrives.
TEST(TripleBuffer, AReaderOnAnotherThreadSeesWholeValuesInOrder) {
  struct Twins {
    int a = 0, b = 0;
  };
  constexpr int last = 200000;
  TripleBuffer<Twins> value;
  std::thread writer([&value] {
    for (int i = 1; i <= last; ++i)
      value.publish({i, -i});
  });
  int seen = 0;
  bool whole = true, ordered = true;
  while (seen != last) {
    const Twins* fetched = value.fetch();
    if (fetched == nullptr)
      continue;
    whole = whole && fetched->a == -fetched->b;
    ordered = ordered && fetched->a > seen;
    seen = fetched->a;
  }
  writer.join();
  EXPECT_TRUE(whole);
  EXPECT_TRUE(ordered);
}

} // namespace
} // namespace velto
