#include "support/preset_markup.h"

#include <gtest/gtest.h>
#include <tinyxml.h>

#include <string>

namespace lumiset {
namespace {

std::string repeated(const std::string& text, int count) {
    std::string all;
    for (int i = 0; i < count; ++i) {
        all += text;
    }
    return all;
}

bool isPresetMarkup(const std::string& text) {
    TiXmlDocument document;
    return readPresetMarkup(text, document);
}

TEST(PresetMarkup, TakesTheFormsThatPresetsAreWrittenIn) {
    for (const std::string& text : {
             std::string("<a/>"),
             std::string("\xEF\xBB\xBF<?xml version='1.0'?>\r\n<!-- < & -->\t<a b = \"'\" c='\"'  ><!----><d /> </a "
                         ">\n<!---->"),
             std::string("<?xml version=\"1.0\" >\n<a_1.x-y b='&amp;&lt;&gt;&quot;&apos;>'></a_1.x-y>"),
             std::string("<a b='\xC3\xBC'/>"),
             std::string("<a b='&#65;&#x41;&#x0020;&#x1f600;&#xD7FF;&#x10FFFF;'/>"),
             repeated("<a>", 8) + "<a/>" + repeated("</a>", 8),
             "<a>" + repeated("<b/>", 4095) + "</a>",
         }) {
        EXPECT_TRUE(isPresetMarkup(text)) << text.substr(0, 100);
    }
}

TEST(PresetMarkup, ReadsReferencesAsTheCharactersThatTheyStandFor) {
    TiXmlDocument document;
    ASSERT_TRUE(
        readPresetMarkup("<a b='&amp;amp;&lt;&gt;&quot;&apos;&#65;&#xe9;&#x20AC;&#x1f600;&#xFFFD;'/>", document));
    EXPECT_STREQ(document.RootElement()->Attribute("b"), "&amp;<>\"'A\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80\xEF\xBF\xBD");
}

TEST(PresetMarkup, RefusesEverythingElse) {
    for (const std::string& text : {
             std::string(""),
             std::string(" "),
             std::string("\xEF\xBB\xBF"),
             std::string("<"),
             std::string("<a"),
             std::string("<a>"),
             std::string("<a></b>"),
             std::string("<a/><b/>"),
             std::string("<a></a></a>"),
             std::string("text<a/>"),
             std::string("<a/>text"),
             std::string("<a>text</a>"),
             std::string("< a/>"),
             std::string("<1/>"),
             std::string("<a b/>"),
             std::string("<a b=/>"),
             std::string("<a b=c/>"),
             std::string("<a b='c/>"),
             std::string("<a b='c\"/>"),
             std::string("<a b='1'c='2'/>"),
             std::string("<a b='1' b='2'/>"),
             std::string("<a b='<'/>"),
             std::string("<a b='\n'/>"),
             std::string("<a b='&'/>"),
             std::string("<a b='&nbsp;'/>"),
             std::string("<a b='&#;'/>"),
             std::string("<a b='&#65'/>"),
             std::string("<a b='&#x;'/>"),
             std::string("<a b='&#X41;'/>"),
             std::string("<a b='&#-65;'/>"),
             std::string("<a b='&#0;'/>"),
             std::string("<a b='&#x1F;'/>"),
             std::string("<a b='&#xD800;'/>"),
             std::string("<a b='&#x110000;'/>"),
             std::string("<a b='&#4294967361;'/>"),
             std::string("<a b='&#65"),
             std::string("<a b='&amp'/>"),
             std::string("<a></ a>"),
             std::string("<!DOCTYPE a [<!ENTITY b 'bb'>]><a/>"),
             std::string("<![CDATA[x]]><a/>"),
             std::string("<a><![CDATA[x]]></a>"),
             std::string("<?php ?><a/>"),
             std::string("<a><?xml?></a>"),
             std::string(" <?xml version='1.0'?><a/>"),
             std::string("<!-- <a/>"),
             std::string("<a><!-- </a>"),
             std::string("<!-- a -- b --><a/>"),
             std::string("<!-- a ---><a/>"),
             std::string("<a b='\xEF\xBF\xBE'/>"),
             std::string("<!-- \xEF\xBF\xBF --><a/>"),
             std::string("<a b='&#xFFFE;'/>"),
             std::string("<a b='&#65535;'/>"),
             std::string("<a b='\x01'/>"),
             std::string("<a b='\xFF'/>"),
             std::string("<a b='\xC0\xAF'/>"),
             std::string("<a b='\xED\xA0\x80'/>"),
             std::string("<a b='\xC3"),
             std::string("<a b='\0'/>", 9),
             repeated("<a>", 9) + "<a/>" + repeated("</a>", 9),
             repeated("<a>", 300000),
             "<a>" + repeated("<b/>", 4096) + "</a>",
             repeated("<!--", 250000),
         }) {
        EXPECT_FALSE(isPresetMarkup(text)) << text.substr(0, 100);
    }
}

}  // namespace
}  // namespace lumiset
