// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#include "historytext.h"

#include "histories.h"

#include <gmock/gmock.h>
#include <sstream>
#include <stdexcept>

using namespace testing;

TEST(HistoryText, WhatIsWrittenReadsBackAsTheSame)
{
    const HistoriesResult result = checkHistories(1, 100, [](const History &history) {
        const std::string written = text(history);
        std::istringstream in(written);
        const std::string again = text(parseHistory(in));
        return written == again ? "" : again;
    });
    EXPECT_THAT(result.difference, IsEmpty()) << text(result.failed);
    EXPECT_THAT(result.passed, Eq(100));
}

TEST(HistoryText, CommentsAndEmptyLinesAreNoSteps)
{
    std::istringstream in("# what happened\n\nA leaves the bus\n");
    EXPECT_THAT(parseHistory(in), SizeIs(1));
}

TEST(HistoryText, FieldsAreRead)
{
    const Step step = parseStep("at once: B adds Call1{Status=u5,Uri=\"5\"}+org.example.Other to /c at /calls");
    EXPECT_THAT(step.kind, Eq(StepKind::Add));
    EXPECT_TRUE(step.atOnce);
    EXPECT_THAT(step.application, Eq('B'));
    EXPECT_THAT(step.object, Eq("/c"));
    ASSERT_THAT(step.interfaces, SizeIs(2));
    EXPECT_THAT(step.interfaces[0].name, Eq(callInterface));
    ASSERT_THAT(step.interfaces[0].properties, SizeIs(2));
    EXPECT_THAT(step.interfaces[0].properties[1].second->text, StrEq("\"5\""));
}

static std::string complaintAbout(const std::string &line)
{
    try {
        parseStep(line);
    } catch (const std::runtime_error &error) {
        return error.what();
    }
    return {};
}

TEST(HistoryText, ALineThatIsNoStepIsNamedWithTheReason)
{
    EXPECT_THAT(complaintAbout("A does a dance"), AllOf(HasSubstr("A does a dance"), HasSubstr("no step")));
    EXPECT_THAT(complaintAbout("A says status five of /c"), HasSubstr("'five' is not a number"));
    EXPECT_THAT(complaintAbout("a leaves the bus"), HasSubstr("'a' is not the letter"));
    EXPECT_THAT(complaintAbout("A registers calls"), HasSubstr("'calls' is not an object path"));
    EXPECT_THAT(complaintAbout("A adds Call1{Status=k9} to /c at /"), HasSubstr("'k9}' begins with none"));
}
