// Laws as GoogleTest's tests; see ../rapidcheck.h.
#pragma once

#include "../rapidcheck.h"

#define RC_GTEST_PROP(suite, name, parameters)                                                     \
  static void law_##suite##_##name parameters;                                                     \
  TEST(suite, name) {                                                                              \
    ::rc::check(law_##suite##_##name);                                                             \
  }                                                                                                \
  static void law_##suite##_##name parameters
