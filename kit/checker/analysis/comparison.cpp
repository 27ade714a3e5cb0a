// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#include "analysis/comparison.h"

#include "analysis/names.h"
#include "analysis/variants.h"

#include <algorithm>

namespace {

struct Shown
{
    std::string provider;
    std::string uri;
    std::string name;
    std::string status;
};

std::vector<Shown> callsOf(const Message &message)
{
    std::vector<Shown> calls;
    const Variant objects = child(message.body, 0);
    forEachEntry(objects.get(), [&calls](std::string_view, GVariant *interfaces) {
        forEachEntry(interfaces, [&calls](std::string_view interface, GVariant *properties) {
            if (interface != Names::desktopCall)
                return;
            Shown call;
            forEachEntry(properties, [&call](std::string_view key, GVariant *value) {
                const std::string text(hasType(value, "s") ? textOf(value) : std::string_view());
                if (key == "ProviderId")
                    call.provider = text;
                else if (key == "Uri")
                    call.uri = text;
                else if (key == "LineId")
                    call.name = text;
                else if (key == "StatusText")
                    call.status = text;
            });
            calls.push_back(std::move(call));
        });
    });
    return calls;
}

void compareOne(Analysis &analysis, const Message &message, Application &application, std::vector<Shown> shown)
{
    Occasion occasion{analysis, analysis.world(), Event::Compared, message, &application};
    for (auto &[path, call] : application.calls) {
        if (!call.isKnown || call.isGone)
            continue;
        const auto found = std::find_if(shown.begin(), shown.end(),
            [&call = call](const Shown &one) { return one.uri == call.uri && one.name == call.name; });
        const std::string status = found == shown.end() ? "" : found->status;
        occasion.call = &call;
        occasion.object = call.path;
        occasion.shown = status;
        analysis.happen(occasion);
        if (found != shown.end())
            shown.erase(found);
    }
    for (const Shown &rest : shown) {
        occasion.call = nullptr;
        occasion.object = rest.uri;
        occasion.shown = rest.status;
        analysis.happen(occasion);
    }
}

} // namespace

void Comparison::compare(Analysis &analysis, const Message &hostCalls)
{
    if (hostCalls.signature != Names::snapshotType)
        return;
    const std::vector<Shown> all = callsOf(hostCalls);
    for (auto &[name, application] : analysis.world().applications) {
        const std::string mark = '/' + name + '@';
        std::vector<Shown> own;
        std::copy_if(all.begin(), all.end(), std::back_inserter(own),
            [&mark](const Shown &call) { return call.provider.find(mark) != std::string::npos; });
        if (!application.managers.empty() && application.cause < 0)
            compareOne(analysis, hostCalls, application, own);
    }
}
