// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#include "analysis/analysis.h"
#include "analysis/names.h"

#include <algorithm>

static const Rule unanswered("commands", "command-unanswered", Severity::Warning,
    {"A command of the host got no reply.",
        "The host does not wait for it, but every open reply costs host and bus daemon memory, and at the end the bus "
        "daemon refuses further commands.",
        "Reply to every method call, with an empty reply or with an error.", "call SetHold (true), and no reply",
        "call SetHold (true) → reply"});

static const Rule refused("commands", "command-refused", Severity::Warning,
    {"A command of the host was answered with an error.",
        "The host does not look at replies: the person who pressed the button sees nothing happen.",
        "Implement Accept, Reject and SetHold, and SendDTMF and the updates where the interfaces are offered.",
        "call Accept → error org.example.Error.NotToday", "call Accept → reply\nsignal StatusChanged (5)"},
    {"command-without-effect"});

static const Rule withoutEffect("commands", "command-without-effect", Severity::Error,
    {"The application took a command and nothing came of it.",
        "The host goes on to show the old status, for only StatusChanged tells it that a command had an effect.",
        "Do what the command says and send StatusChanged: 5 for Accept and for resume, 1 and the removal for Reject.",
        "call Accept → reply, and nothing", "call Accept → reply\nsignal StatusChanged (5)"});

static const Rule notKept("commands", "hold-promised-not-kept", Severity::Error,
    {"The call says that it is Holdable, and does not go on hold.",
        "The host offers hold, and nothing happens when it is pressed.",
        "Send StatusChanged (7) when the call is held, or report Holdable as false.",
        "\"Holdable\": <true>\ncall SetHold (true) → reply, and nothing",
        "\"Holdable\": <true>\ncall SetHold (true) → reply\nsignal StatusChanged (7)"},
    {"command-refused", "command-without-effect"});

static const Rule late("commands", "command-late", Severity::Warning,
    {"A command was answered late.", "Its effect comes later still, and whoever pressed the button presses it again.",
        "Reply first, and do what takes time from the main loop.", "call Accept → reply after half a second",
        "call Accept → reply at once"},
    {"command-unanswered"});

static const Rule outOfOrder("commands", "tones-out-of-order", Severity::Warning,
    {"Tones were answered in another order than that in which they came.",
        "The application handles its messages at the same time, so the far end may hear the digits in another order.",
        "Handle the commands of a call one behind the other, for example in one queue.",
        "call SendDTMF (\"1\"), call SendDTMF (\"2\")\nreply to the second, reply to the first",
        "call SendDTMF (\"1\"), call SendDTMF (\"2\")\nreply to the first, reply to the second"});

static const Rule stuck("commands", "application-stuck", Severity::Error,
    {"The application says nothing any more.",
        "It neither answers the host nor sends signals, so its calls stay as they are and nobody can end them.",
        "Look for what blocks its main loop.", "call Accept, call Reject (1), and no message of the application",
        "call Accept → reply\nsignal StatusChanged (5)"},
    {"command-unanswered", "command-without-effect", "hold-promised-not-kept", "command-late", "snapshot-unanswered"});

namespace {

constexpr Time patience = 2000 * milliseconds;
constexpr Time forEffect = 3000 * milliseconds;
constexpr Time atOnce = 300 * milliseconds;
// What is still open when a call ends was not going to be answered.
constexpr Time longEnough = 100 * milliseconds;

bool isUpdate(const Command &command) { return command.member.substr(0, 6) == "Update"; }

// The effect that a command has to have; true when it is there.
bool hasEffect(const Call &call, const Command &command)
{
    if (Status::isFinal(call.sent))
        return true;
    if (command.member == "Accept")
        return Status::isActive(call.sent) || call.sent == Status::held;
    if (command.member == "SetHold")
        return command.flag == (call.sent == Status::held);
    return command.member != "Reject";
}

bool isSensible(const Call &call, const Command &command)
{
    if (command.member == "Accept")
        return call.sent == Status::incoming;
    if (command.member == "SetHold")
        return command.flag ? call.isHoldable && Status::isActive(call.sent) : call.sent == Status::held;
    return true;
}

struct Commands
{
    std::uint64_t newest = 0; // number of the message
};

// Accept, Reject and SetHold are about one thing, the state of the call; only the last of them has to be obeyed.
void expectEffect(const Occasion &o)
{
    const Command command = *o.command;
    const bool isOfState = command.member == "Accept" || command.member == "Reject" || command.member == "SetHold";
    if (!isOfState || o.call->isGone || !isSensible(*o.call, command) || hasEffect(*o.call, command))
        return;
    o.call->memory.of<Commands>().newest = command.number;
    o.later(forEffect, [command](const Occasion &later) {
        if (later.call->memory.of<Commands>().newest != command.number || hasEffect(*later.call, command))
            return;
        const std::string what = command.member + " of " + later.call->path
            + " came three seconds ago, and its status is " + std::string(Status::wordOf(later.call->sent)) + " still.";
        later.report(command.member == "SetHold" && command.flag ? notKept : withoutEffect, what);
    });
}

bool isOpen(const Call &call, const Command &command)
{
    return std::any_of(call.open.begin(), call.open.end(),
        [&command](const Command &other) { return other.serial == command.serial && other.number == command.number; });
}

// Whoever has let a command lie and gone on to speak does not answer commands; nothing blocks it.
bool isSilent(const Occasion &o)
{
    return std::all_of(o.call->open.begin(), o.call->open.end(),
        [&o](const Command &open) { return open.at > o.application->lastSent; });
}

const Check commanded({Event::Commanded, Event::AudioTold}, [](const Occasion &o) {
    expectEffect(o);
    if (o.call->isGone)
        return;
    const Command command = *o.command;
    o.later(patience, [command](const Occasion &later) {
        if (!isOpen(*later.call, command))
            return;
        if (isSilent(later))
            later.report(stuck, command.member + " came two seconds ago, and it has sent nothing since.");
        else
            later.report(
                unanswered, command.member + " of " + later.call->path + " has not been answered for two seconds.");
    });
});

const Check ended({Event::CallEnds}, [](const Occasion &o) {
    for (const Command &command : o.call->open) {
        if (o.message.member != "NameOwnerChanged" && o.now() - command.at > longEnough)
            o.report(
                unanswered, command.member + " of " + o.call->path + " was not answered before the call was removed.");
    }
});

const Check answered({Event::CommandAnswered, Event::CommandFailed}, [](const Occasion &o) {
    const Time took = o.now() - o.command->at;
    if (took > atOnce && !o.call->isGone)
        o.report(late,
            o.command->member + " of " + o.call->path + " was answered after " + std::to_string(took / milliseconds)
                + " ms.");
    if (o.command->member != "SendDTMF" || o.event == Event::CommandFailed)
        return;
    for (const Command &open : o.call->open) {
        if (open.member == "SendDTMF" && open.serial != o.command->serial && open.number < o.command->number) {
            o.report(outOfOrder, "SendDTMF of " + o.call->path + " was answered before an earlier one.");
            return;
        }
    }
});

const Check failed({Event::CommandFailed}, [](const Occasion &o) {
    const bool isNoReply = o.message.error == "org.freedesktop.DBus.Error.NoReply";
    if (o.call->isGone || isNoReply || o.message.sender == Names::bus)
        return;
    const std::string what
        = o.command->member + " of " + o.call->path + " was answered with " + std::string(o.message.error) + '.';
    if (o.command->member == "SetHold" && o.command->flag && o.call->isHoldable)
        o.report(notKept, what);
    else if (o.command->member != "SetHold" || o.call->isHoldable)
        o.report(refused, what + (isUpdate(*o.command) ? " It offers the interface." : ""));
});

} // namespace
