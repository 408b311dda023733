// Runs the tests of a program in the locale that WQDATA_TEST_LOCALE names, or in the one that every
// program starts with.
#include <gtest/gtest.h>

#include <clocale>
#include <cstdio>
#include <cstdlib>

int main(int argc, char** argv) {
  testing::InitGoogleTest(&argc, argv);
  const char* const locale = std::getenv("WQDATA_TEST_LOCALE");
  if (locale != nullptr && std::setlocale(LC_ALL, locale) == nullptr) {
    std::fprintf(stderr, "the system has no locale %s\n", locale);
    return EXIT_FAILURE;
  }
  return RUN_ALL_TESTS();
}
