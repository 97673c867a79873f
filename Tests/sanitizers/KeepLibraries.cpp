// Keeps libraries loaded, in place of the C library's dlclose(): the leak report at the end of the
// process can then name the library of every stack, and leaks.supp can match it.
extern "C" int dlclose(void* /*library*/) noexcept {
  return 0;
}
