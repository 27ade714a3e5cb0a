// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

// What can be seen of a mistake afterwards, when nobody watched it being made.

#include "analysis/analysis.h"
#include "analysis/names.h"

static const Rule notShown("announcing", "not-shown", Severity::Error,
    {"The application has a call that the host does not show.",
        "It was added without InterfacesAdded, or announced from another path or with another type.",
        "Run ringlet-check watch and let a call come: it tells which of them it is.",
        "GetManagedObjects has /calls/one, and the host shows no such call",
        "GetManagedObjects has /calls/one, and the host shows it"});

static const Rule stillShown("ending", "still-shown", Severity::Error,
    {"The host shows a call that the application does not have any more.",
        "It was removed without InterfacesRemoved, or from another path, with another type or without naming Call1.",
        "Run ringlet-check watch and end a call: it tells which of them it is.",
        "the host shows sip:ann@example.org, and GetManagedObjects has no such call",
        "the host shows nothing, and GetManagedObjects has nothing"});

static const Rule differs("status", "status-differs", Severity::Error,
    {"The host shows another status than the application has.",
        "StatusChanged was not sent, was sent too early, with another type or from another path.",
        "Run ringlet-check watch and answer a call: it tells which of them it is.",
        "GetManagedObjects has \"Status\": <uint32 5>, and the host shows incoming",
        "GetManagedObjects has \"Status\": <uint32 5>, and the host shows active"});

namespace {

const Check compared({Event::Compared}, [](const Occasion &o) {
    if (!o.call)
        o.report(
            stillShown, "The host shows a call of it to \"" + std::string(o.object) + "\", which it does not have.");
    else if (o.shown.empty() && !Status::isFinal(o.call->sent))
        o.report(notShown, o.call->path + " is in GetManagedObjects, and the host does not show it.");
    else if (!o.shown.empty() && o.shown != Status::wordOf(o.call->sent) && o.call->hasStatus
        && o.call->sent < Status::firstUnknown)
        o.report(differs,
            o.call->path + " is " + std::string(Status::wordOf(o.call->sent)) + ", and the host shows "
                + std::string(o.shown) + '.');
});

} // namespace
