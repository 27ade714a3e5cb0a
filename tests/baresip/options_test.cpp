// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#include "options.h"

#include "printers.h"
#include "program.h"

#include <gmock/gmock.h>

using testing::HasSubstr;

namespace {

std::string faultOf(const QStringList &arguments)
{
    Options options;
    return options.read(QStringList{"ringlet-baresip"} + arguments).toStdString();
}

} // namespace

TEST(BaresipOptions, HaveAPlaceForBaresipByDefault)
{
    Options options;
    EXPECT_EQ(options.read({"ringlet-baresip"}), "");
    EXPECT_EQ(options.host, "127.0.0.1");
    EXPECT_EQ(options.port, 4444);
    EXPECT_EQ(options.inputs.value("microphone"), "");
}

TEST(BaresipOptions, TakePlaceAndDevices)
{
    Options options;
    EXPECT_EQ(options.read({"ringlet-baresip", "--control", "[::1]:5000", "--input", "microphone=alsa,hw:1,0",
                  "--input", "headset=pulse,", "--output", "headset=alsa,default"}),
        "");
    EXPECT_EQ(options.host, "::1");
    EXPECT_EQ(options.port, 5000);
    EXPECT_EQ(options.inputs.value("microphone"), "alsa,hw:1,0");
    EXPECT_EQ(options.inputs.value("headset"), "pulse,");
    EXPECT_EQ(options.outputs.value("headset"), "alsa,default");
    EXPECT_EQ(options.outputs.value("microphone"), "");
}

TEST(BaresipOptions, ThatAreWrongAreNamed)
{
    for (const char *address : {"nowhere", "host:", ":4444", "host:0", "host:65536", "host:x", "a b:1"})
        EXPECT_THAT(faultOf({"--control", address}), HasSubstr(std::string("\"") + address + "\" is no HOST:PORT"));
    for (const char *pair : {"", "headset", "=alsa,x", "headset=", "headset=alsa", "headset=,x", "a=al sa,x"})
        EXPECT_THAT(faultOf({"--input", pair}), HasSubstr("is not HOST-DEVICE=DRIVER,DEVICE"));
    EXPECT_THAT(faultOf({"--output", "a=b,c", "--output", "a=b,d"}), HasSubstr("--output: \"a=b,d\""));
    EXPECT_THAT(faultOf({"--nosuch"}), HasSubstr("nosuch"));
    EXPECT_THAT(faultOf({"extra"}), HasSubstr("\"extra\" is no option"));
}

TEST(BaresipProgram, EndsWith2WhenItIsCalledWrongly)
{
    Program program;
    ASSERT_TRUE(program.start(RINGLET_BARESIP, {"--nosuch"}));
    EXPECT_EQ(program.waitForExit(), 2);
    EXPECT_THAT(program.errorOutput().toStdString(), HasSubstr("--help shows what there is"));
}

TEST(BaresipProgram, ShowsHelpAndVersion)
{
    for (const char *option : {"--help", "--version"}) {
        Program program;
        ASSERT_TRUE(program.start(RINGLET_BARESIP, {option}));
        EXPECT_EQ(program.waitForExit(), 0);
        EXPECT_THAT(program.lines().join('\n').toStdString(), HasSubstr("ringlet-baresip"));
    }
}

TEST(BaresipProgram, EndsWith3WithoutASessionBus)
{
    Program program;
    ASSERT_TRUE(program.start(RINGLET_BARESIP, {}, {"DBUS_SESSION_BUS_ADDRESS=unix:path=/nonexistent"}));
    EXPECT_EQ(program.waitForExit(), 3);
    EXPECT_THAT(program.errorOutput().toStdString(), HasSubstr("no session bus"));
}
