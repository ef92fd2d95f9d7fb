#include "temparea.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <regex>
#include <string>

#include "constants.h"

namespace {

TEST(TempAreaTest, TheFirstNumberFromAClockOfOne) {
  EXPECT_EQ(TempArea::nextSeed(1), 16807u);
  EXPECT_EQ(TempArea::mix(16807), 1400897601u);
  EXPECT_EQ(TempArea::mix(16807) % (999999 + 1), 897601u);
}

TEST(TempAreaTest, NextSeedWrapsAndNeverGivesZeroAndMixRotatesOverThirtyOneBits) {
  const struct {
    uint32_t seed, next;
  } seeds[] = {{0, 2147483647u},            // a zero result is replaced
               {2147483646u, 4294950489u},  // below zero wraps, with nothing added back
               {127773, 4294964460u},       // only the subtracted part remains, wrapped
               {16807, 282475249u}};
  for (const auto& row : seeds) EXPECT_EQ(TempArea::nextSeed(row.seed), row.next) << row.seed;
  const struct {
    uint32_t seed, mixed;
  } mixes[] = {{0x00000100u, 0x00000001u},
               {0x000000ffu, 0x7f800000u},
               {0x80000000u, 0x00800000u},
               {0x00000001u, 0x00800000u},  // bit 0 and bit 31 land on the same bit
               {0xffffffffu, 0x7fffffffu}};
  for (const auto& row : mixes) EXPECT_EQ(TempArea::mix(row.seed), row.mixed) << row.seed;
  EXPECT_EQ(TempArea::random(0), 0u);
  EXPECT_LE(TempArea::random(9), 9u);
}

TEST(TempAreaTest, CreateNamesADirectoryAndContinuesTheSequence) {
  TempArea& area = TempArea::instance();
  area.create(zet::TEMP_BASE, zet::TEMP_PREFIX);
  const std::string first = area.getPath();
  EXPECT_TRUE(std::regex_match(first, std::regex("/tmp/zet-(0|[1-9][0-9]{0,5})"))) << first;
  // Reseeding from the clock would repeat the name within the same second.
  area.create("/base", "p-");
  EXPECT_TRUE(std::regex_match(area.getPath(), std::regex("/base/p-[0-9]+")));
  EXPECT_NE(area.getPath().substr(8), first.substr(9));
}

// Runs in a fresh process, where nothing has named the area yet.
TEST(TempAreaDeathTest, PathBeforeCreateIsTheBase) {
  const std::string oldStyle = GTEST_FLAG_GET(death_test_style);
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  EXPECT_EXIT(exit(TempArea::instance().getPath() == "/tmp" ? 0 : 1), ::testing::ExitedWithCode(0),
              "");
  GTEST_FLAG_SET(death_test_style, oldStyle);
}

}  // namespace
