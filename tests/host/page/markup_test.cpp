#include "host/page/markup.h"

#include <gtest/gtest.h>

#include <limits>

TEST(Markup, WhatHtmlReservesIsEscaped) {
    EXPECT_EQ(Escaped("<script>alert('a' & \"b\")</script>"),
              "&lt;script&gt;alert(&#39;a&#39; &amp; &quot;b&quot;)&lt;/script&gt;");
    EXPECT_EQ(Escaped("a\nb\x7F\x01"), "a?b??");
    EXPECT_EQ(Attribute("title", "\" onclick=\"x"), " title=\"&quot; onclick=&quot;x\"");
}

TEST(Markup, ValuesOfATemplateAreNotSearchedForNames) {
    EXPECT_EQ(FilledIn("<{{a}}|{{b}}>", {{"a", "{{b}}"}, {"b", "}}{{a}}"}}), "<{{b}}|}}{{a}}>");
    EXPECT_EQ(FilledIn("nothing", {}), "nothing");
}

TEST(Markup, NumbersAreShort) {
    EXPECT_EQ(Percent(0.125), "12.5%");
    EXPECT_EQ(Percent(1.0 / 3.0), "33.333%");
    EXPECT_EQ(LevelText(-45.04), "-45.0");
    EXPECT_EQ(LevelText(-std::numeric_limits<double>::infinity()), "silence");
}
