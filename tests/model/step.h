// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#ifndef TESTS_STEP_H
#define TESTS_STEP_H

#include "propertyvalue.h"

#include <string>
#include <utility>
#include <vector>

/** What can happen in a history; historytext.cpp has the words for each. */
enum class StepKind {
    Configure,
    ConfigureWithNull,
    ConfigureAgain,
    Start,
    Suspend,
    Resume,
    Finalize,
    Register,
    RegisterBadly,
    TakeName,
    Leave,
    LeaveHalfWay,
    ClaimDeparture,
    ForgeAnswer,
    Answer,
    AnswerWithMore,
    AnswerBadly,
    AnswerWithError,
    Add,
    AddBadly,
    Remove,
    RemoveBadly,
    Status,
    StatusBadly,
    RequestMute,
    RequestRoute,
    RequestBadly,
    HostAnswer,
    HostHangup,
    HostHold,
    HostHoldByName,
    HostDtmf,
    HostDeflect,
    HostMerge,
    HostSplit,
    HostDial,
    Mute,
    SelectInput,
    SelectOutput,
    Devices
};

using Properties = std::vector<std::pair<std::string, const PropertyValue *>>;

struct InterfaceReport
{
    std::string name;
    Properties properties;
};

/** In the order of sending; a name may come twice, as the bus allows. */
using Interfaces = std::vector<InterfaceReport>;

struct ObjectReport
{
    std::string path;
    Interfaces interfaces;
};

/** One thing that an application or the host does. A kind uses the fields that its words mention. */
struct Step
{
    StepKind kind = StepKind::Configure;
    /** Follows the step before without waiting for what that one causes. */
    bool atOnce = false;
    char application = 'A';
    /** Object path of a call manager. */
    std::string manager = "/calls";
    /** Object path of a call, in the application. */
    std::string object = "/calls/c1";
    Interfaces interfaces;
    std::vector<std::string> names;
    std::vector<ObjectReport> objects;
    unsigned number = 0;
    bool on = false;
    std::string text;
    std::string otherText;
};

using History = std::vector<Step>;

/** Whether an application does it; what remains is the host's. */
bool isByApplication(StepKind kind);
/** Whether it ends the plug-in's request for an application's objects. */
bool isAnswer(StepKind kind);
/** Whether it tells, or pretends to tell, which interfaces an object has. */
bool isReport(StepKind kind);
/** Whether the application's connection ends with it. */
bool isLeave(StepKind kind);
/** Whether it is a signal of a call, or what looks like one. */
bool isCallSignal(StepKind kind);
/** Whether the host has a call do it. */
bool isCommand(StepKind kind);

/** The application that never registers, and whose signals go to the plug-in directly: nobody asked for them. */
constexpr char stranger = 'X';

constexpr const char *callInterface = "zelkovar.Call.Call1";
constexpr const char *dtmfInterface = "zelkovar.Call.DTMF1";
constexpr const char *audioInterface = "zelkovar.Call.AudioControl1";

#endif
