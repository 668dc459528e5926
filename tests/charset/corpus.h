// Real texts, found by the environment variable LUMRMISC_CORPUS.
#pragma once

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

#define LUMR_NEEDS_CORPUS()                        \
  if (std::getenv("LUMRMISC_CORPUS") == nullptr) { \
    GTEST_SKIP() << "LUMRMISC_CORPUS is not set";  \
  }

namespace lumr {

inline std::filesystem::path CorpusPath() {
  return std::getenv("LUMRMISC_CORPUS");
}

inline std::string ReadCorpus(const std::filesystem::path& path) {
  std::ifstream file(CorpusPath() / path, std::ios::binary);
  EXPECT_TRUE(file.is_open()) << path;
  return {std::istreambuf_iterator<char>(file), {}};
}

}  // namespace lumr
