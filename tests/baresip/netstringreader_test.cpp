// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#include "netstringreader.h"

#include <gmock/gmock.h>

using testing::ElementsAre;
using testing::IsEmpty;

TEST(NetstringReader, ReadsMessagesThatComeTogether)
{
    NetstringReader reader;
    QList<QByteArray> messages;
    EXPECT_TRUE(reader.read("5:hello,0:,3:a,b,", &messages));
    EXPECT_THAT(messages, ElementsAre("hello", "", "a,b"));
}

TEST(NetstringReader, ReadsMessagesThatComeByteByByte)
{
    NetstringReader reader;
    QList<QByteArray> messages;
    const QByteArray stream("12:hello, world,2:ok,");
    for (const char byte : stream)
        EXPECT_TRUE(reader.read(QByteArray(1, byte), &messages));
    EXPECT_THAT(messages, ElementsAre("hello, world", "ok"));
}

TEST(NetstringReader, ReadsWhatItFramesItself)
{
    NetstringReader reader;
    QList<QByteArray> messages;
    const QByteArray message = QByteArray("\0:,\xff", 4) + QByteArray(NetstringReader::maximumSize - 4, 'x');
    EXPECT_TRUE(reader.read(NetstringReader::frame(message), &messages));
    EXPECT_THAT(messages, ElementsAre(message));
}

class BrokenNetstring : public testing::TestWithParam<const char *>
{
};

TEST_P(BrokenNetstring, IsRefusedAndNothingIsReadBehindIt)
{
    NetstringReader reader;
    QList<QByteArray> messages;
    EXPECT_FALSE(reader.read(QByteArray("2:ok,") + GetParam(), &messages));
    EXPECT_THAT(messages, ElementsAre("ok"));
    EXPECT_FALSE(reader.read("2:ok,", &messages));
    EXPECT_THAT(messages, ElementsAre("ok"));
    reader.reset();
    EXPECT_TRUE(reader.read("2:ok,", &messages));
    EXPECT_THAT(messages, ElementsAre("ok", "ok"));
}

INSTANTIATE_TEST_SUITE_P(OfManyKinds, BrokenNetstring,
    testing::Values(":,", "-1:,", "+1:a,", " 1:a,", "1 :a,", "x", "5:hello;", "2:hello,", "1048577:", "99999999",
        "00000000000000000000000000000000", "4294967297:a,", "GET / HTTP/1.0\r\n"));

TEST(NetstringReader, KeepsNoMoreThanOneMessageOfThoseThatAreIncomplete)
{
    NetstringReader reader;
    QList<QByteArray> messages;
    EXPECT_TRUE(reader.read("1048576:" + QByteArray(NetstringReader::maximumSize, 'x'), &messages));
    EXPECT_THAT(messages, IsEmpty());
    EXPECT_FALSE(reader.read("x", &messages));
}
