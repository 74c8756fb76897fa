#include "apps/gpu_monitor/frame_ledger.h"

#include <gtest/gtest.h>

namespace lumiset::monitor {
namespace {

constexpr const char* kGuid = "0123abcd-0000-4000-8000-00000000000";  // and a digit

FrameMessage message(char frame, bool ended) {
    return {{std::string(kGuid) + frame, "Host", "Library", "Effect"}, ended};
}

TEST(FrameMessages, AreReadFromTheirEnd) {
    const std::string guid = kGuid + std::string("1");
    const struct {
        const char* names;
        const char* host;
        const char* library;
        const char* effect;
    } rows[] = {
        {"Host;Library;Old TV", "Host", "Library", "Old TV"},
        {"A;B;;C;Library;Old TV", "A;B;;C", "Library", "Old TV"},
        {";Library;Old TV", "", "Library", "Old TV"},
        {";;", "", "", ""},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.names);
        for (const char* state : {"1", "2"}) {
            const auto read = parseFrameMessage(std::string(row.names) + ';' + guid + ';' + state);
            ASSERT_TRUE(read);
            EXPECT_EQ(read->frame.host, row.host);
            EXPECT_EQ(read->frame.library, row.library);
            EXPECT_EQ(read->frame.effect, row.effect);
            EXPECT_EQ(read->frame.guid, guid);
            EXPECT_EQ(read->ended, *state == '2');
        }
    }
    for (const std::string& text :
         {std::string(), guid, "Library;Effect;" + guid + ";1", "H;L;E;" + guid + ";3", "H;L;E;" + guid + ";",
          "H;L;E;" + guid + "0;1", std::string("H;L;E;;1"), "H;L;E;" + guid + ";1 ", std::string("H;L;E;../../x;1")}) {
        EXPECT_FALSE(parseFrameMessage(text)) << text;
    }
}

TEST(FrameLedger, KeepsFramesThatHaveNotEndedByTheirProcess) {
    const platform::Process one{7, 100};
    const platform::Process another{7, 200};  // the same number, given again
    FrameLedger ledger;
    ledger.note(message('1', false), one);
    ledger.note(message('2', false), one);
    ledger.note(message('3', false), another);
    ledger.note(message('9', true), one);  // started before anybody listened
    EXPECT_EQ(ledger.processes(), (std::vector<platform::Process>{one, another}));
    ledger.note(message('2', true), one);
    const std::vector<platform::CrashReport> reports = ledger.take(one);
    ASSERT_EQ(reports.size(), 1U);
    EXPECT_EQ(reports[0].guid, kGuid + std::string("1"));
    EXPECT_EQ(ledger.processes(), std::vector<platform::Process>{another});
    ledger.note(message('3', true), another);
    EXPECT_TRUE(ledger.empty());
}

}  // namespace
}  // namespace lumiset::monitor
