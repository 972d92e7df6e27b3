#include "rq/sql/SqlText.h"

#include <gtest/gtest.h>

namespace {

struct PlaceCase {
  const char* m_name;
  std::string_view m_text;
  std::size_t m_offset, m_line, m_column;
  std::string_view m_caretText;
};

TEST(SqlText, PlacesAndCarets) {
  const PlaceCase cases[] = {
      {"middle", "a = 1", 4, 1, 5, "  a = 1\n      ^\n"},
      {"behind the end", "a =", 99, 1, 4, "  a =\n     ^\n"},
      {"empty", "", 0, 1, 1, "  \n  ^\n"},
      {"second line", "a = 1\nand x", 10, 2, 5, "  and x\n      ^\n"},
      {"carriage return", "a =\r\nb", 3, 1, 4, "  a =\n     ^\n"},
      {"behind a line feed", "a\n", 2, 2, 1, "  \n  ^\n"},
      {"characters of several bytes", "é = ü", 5, 1, 5, "  é = ü\n      ^\n"},
      {"wide characters", "名前 x", 7, 1, 4, "  名前 x\n       ^\n"},
      {"wide sign", "✅ x", 4, 1, 3, "  ✅ x\n     ^\n"},
      {"combining mark", "e\xCC\x81 x", 4, 1, 4, "  e\xCC\x81 x\n    ^\n"},
      {"marks above letters of Thai", "ที่ x", 10, 1, 5, "  ที่ x\n    ^\n"},
      {"points of Hebrew", "שׁ x", 5, 1, 4, "  שׁ x\n    ^\n"},
      {"tab", "\ta\tb", 3, 1, 4, "  \ta\tb\n  \t \t^\n"},
      {"control character", "a\x1b[2J b", 6, 1, 7, "  a\xEF\xBF\xBD[2J b\n        ^\n"},
      {"no UTF-8", "a\xff b", 3, 1, 4, "  a\xEF\xBF\xBD b\n     ^\n"},
  };
  for (const PlaceCase& c : cases) {
    SCOPED_TRACE(c.m_name);
    const SqlPlace place = PlaceOf(c.m_text, c.m_offset);
    EXPECT_EQ(place.m_line, c.m_line);
    EXPECT_EQ(place.m_column, c.m_column);
    EXPECT_EQ(CaretText(c.m_text, c.m_offset), c.m_caretText);
  }
}

TEST(SqlText, OfALongLineOnlyTheSurroundingsAreShown) {
  const std::string text = std::string(500, 'x') + "!" + std::string(500, 'y');
  EXPECT_EQ(CaretText(text, 500),
            "  ..." + std::string(60, 'x') + '!' + std::string(39, 'y') + "...\n  " + std::string(63, ' ') + "^\n");
}

TEST(SqlText, TextForAMessage) {
  EXPECT_EQ(ForMessage("a\nb\tc\x01", 10), "a b c ");
  EXPECT_EQ(ForMessage("ééééé", 5), "ééééé");
  EXPECT_EQ(ForMessage("éééééé", 5), "ééééé...");
}

TEST(SqlText, WhatIsNoTextIsFound) {
  EXPECT_NO_THROW(CheckIsText("a = 'ü\xF0\x9F\x98\x80'"));
  const std::pair<std::string_view, std::size_t> cases[] = {
      {{"a\0b", 3}, 1}, {"ab\xC3", 2}, {"ü\x80", 2}, {"a\xED\xA0\x80", 1}, {"\xC0\x80", 0}, {"\xF4\x90\x80\x80", 0}};
  for (const auto& [text, offset] : cases) {
    SCOPED_TRACE(testing::PrintToString(text));
    try {
      CheckIsText(text);
      ADD_FAILURE() << "taken";
    } catch (const SqlError& error) {
      EXPECT_EQ(error.GetOffset(), offset);
    }
  }
}

}  // namespace
