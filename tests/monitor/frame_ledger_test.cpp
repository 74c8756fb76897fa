#include "apps/gpu_monitor/frame_ledger.h"

#include <gtest/gtest.h>

namespace lumiset::monitor {
namespace {

constexpr const char* kGuid = "0123abcd-0000-4000-8000-00000000000";  // and a digit

std::string guidOf(int frame) {
    return kGuid + std::to_string(frame);
}

platform::CrashReport reportOf(int frame) {
    return {guidOf(frame), "Host", "Library", "Effect"};
}

TEST(FrameMessages, AreReadFromTheirEnd) {
    const std::string guid = guidOf(1);
    const struct {
        const char* names;
        const char* host;
        const char* effectLibrary;
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
            EXPECT_EQ(read->report.host, row.host);
            EXPECT_EQ(read->report.effectLibrary, row.effectLibrary);
            EXPECT_EQ(read->report.effect, row.effect);
            EXPECT_EQ(read->report.guid, guid);
            EXPECT_EQ(read->state, *state == '2' ? FrameState::kEnded : FrameState::kStarts);
        }
    }
    for (const std::string& text : {std::string(), guid, "Library;Effect;" + guid + ";1", "H;L;E;" + guid + ";3",
                                    "H;L;E;" + guid + ";", "H;L;E;" + guid + "0;1", std::string("H;L;E;;1"),
                                    "H;L;E;" + guid + ";1 ", std::string("H;L;E;../../x;1"), "H;L;E;" + guid + ";3"}) {
        EXPECT_FALSE(parseFrameMessage(text)) << text;
    }
}

TEST(FrameLedger, KeepsFramesThatHaveNotEndedByTheirProcess) {
    const platform::Process one{7, 100};
    const platform::Process another{7, 200};  // the same number, given again
    FrameLedger ledger;
    ledger.start(reportOf(1), one);
    ledger.start(reportOf(2), one);
    ledger.start(reportOf(3), another);
    ledger.end(guidOf(9));  // started before anybody listened
    EXPECT_EQ(ledger.processes(), (std::vector<platform::Process>{one, another}));
    ledger.end(guidOf(2));
    const std::vector<platform::CrashReport> reports = ledger.take(one);
    ASSERT_EQ(reports.size(), 1U);
    EXPECT_EQ(reports[0].guid, guidOf(1));
    EXPECT_EQ(ledger.processes(), std::vector<platform::Process>{another});
    ledger.end(guidOf(3));
    EXPECT_TRUE(ledger.empty());
    ledger.end(guidOf(4));
    ledger.start(reportOf(4), another);
    EXPECT_TRUE(ledger.empty()) << "read in the wrong order";
}

TEST(FrameLedger, ForgetsTheFramesOfAHostThatLeaves) {
    const auto leaves = parseFrameMessage(";;;;3");
    ASSERT_TRUE(leaves);
    EXPECT_EQ(leaves->state, FrameState::kHostLeaves);
    const platform::Process one{7, 100};
    const platform::Process another{8, 100};
    FrameLedger ledger;
    ledger.start(reportOf(1), one);
    ledger.start(reportOf(2), another);
    ledger.leave(one);
    ledger.start(reportOf(3), one);  // by a thread that did not know
    EXPECT_EQ(ledger.processes(), std::vector<platform::Process>{another});
}

TEST(FrameLedger, StaysSmallWhateverItIsTold) {
    const platform::Process sender{7, 100};
    FrameLedger ledger;
    for (int frame = 0; frame < 20000; ++frame) {
        ledger.start(reportOf(frame), sender);
        ledger.end(std::to_string(frame));
    }
    EXPECT_LE(ledger.take(sender).size(), 4096U);
}

}  // namespace
}  // namespace lumiset::monitor
