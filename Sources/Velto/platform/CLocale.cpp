#include "CLocale.h"

#include <locale.h>

namespace velto {

namespace {

// Sets the C locale for the calling thread in its scope.
class CLocale {
public:
  CLocale() : previous_(uselocale(classic())) {}
  CLocale(const CLocale&) = delete;
  CLocale& operator=(const CLocale&) = delete;
  ~CLocale() { uselocale(previous_); }

private:
  static locale_t classic() {
    static const locale_t locale = newlocale(LC_ALL_MASK, "C", nullptr);
    return locale;
  }

  locale_t previous_;
};

} // namespace

void runInCLocale(const std::function<void()>& work) {
  const CLocale cLocale;
  work();
}

} // namespace velto
