#include <gtest/gtest.h>

#include "html/golden.h"
#include "html/golden_functions.h"

namespace lumr {
namespace {

TEST(Html, MakesWhatWasReviewed) {
  for (const GoldenFunction& function : kGoldenFunctions) {
    const std::vector<GoldenCase> cases = ReadGolden(function.file);
    EXPECT_FALSE(cases.empty()) << function.file;
    for (const GoldenCase& c : cases) {
      SCOPED_TRACE(std::string(function.file) + ": " + c.name);
      std::u16string text = c.input;
      EXPECT_EQ(function.run(text, c.argument), c.result);
      EXPECT_EQ(Escaped(text), Escaped(c.output));
    }
  }
}

}  // namespace
}  // namespace lumr
