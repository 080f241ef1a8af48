#include "base/Digest.h"

#include "tests/support/Printing.h"

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace pelloran {

namespace {

TEST(Sha256Hex, IsInLowerCase) {
    EXPECT_EQ(sha256Hex("abc"), u"ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad"_s);
    EXPECT_EQ(sha256Hex(""), u"e3b0c44298fc1c149afbf4c8996fb92427ae41e4649b934ca495991b7852b855"_s);
}

} // namespace

} // namespace pelloran
