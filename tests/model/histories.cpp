// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#include "histories.h"

#include <algorithm>
#include <cstdlib>
#include <rapidcheck.h>

using rc::Gen;
namespace gen = rc::gen;

// Steps in the longest history; half as many on average, and most of them can be done.
static constexpr int longest = 72;

// A number below `count`, all of them equally likely: without the size, the high ones would hardly ever come.
static Gen<std::size_t> below(std::size_t count)
{
    return gen::resize(rc::kNominalSize, gen::inRange<std::size_t>(0, count));
}

// One of the entries, the likelier the greater its weight; shrinks towards the first.
template <typename T>
static Gen<T> pick(const std::vector<std::pair<int, T>> &weighted)
{
    std::vector<T> all;
    for (const auto &[weight, value] : weighted)
        all.insert(all.end(), std::size_t(weight), value);
    return gen::map(below(all.size()), [all](std::size_t i) { return all[i]; });
}

static Gen<bool> oneIn(std::size_t n)
{
    return gen::map(below(n), [n](std::size_t i) { return i == n - 1; });
}

static Gen<std::string> texts(const std::vector<std::pair<int, std::string>> &weighted) { return pick(weighted); }

// Few names, so that steps meet. A call of one call manager may lie anywhere, also below another's path.
static Gen<char> applications() { return pick<char>({{6, 'A'}, {2, 'B'}, {1, 'C'}}); }
static Gen<char> senders() { return pick<char>({{12, 'A'}, {4, 'B'}, {2, 'C'}, {1, stranger}}); }
static Gen<std::string> managers() { return texts({{7, "/calls"}, {2, "/"}, {1, "/calls/c1"}}); }
static Gen<std::string> objects() { return texts({{6, "/calls/c1"}, {2, "/calls/c2"}, {1, "/calls/C"}, {1, "/"}}); }
static Gen<std::string> devices() { return texts({{2, "mic"}, {2, "ear"}, {1, "headset"}, {1, ""}, {1, "unknown"}}); }

static Gen<unsigned> statuses()
{
    return pick<unsigned>({{4, 5}, {3, 3}, {3, 7}, {3, 2}, {2, 6}, {1, 0}, {1, 1}, {1, 4}, {1, 8}, {1, 4294967295}});
}

static Gen<std::string> interfaceNames()
{
    // The last three tell the order of UTF-16 from that of UTF-8, and a look-up that ignores case.
    return texts({{8, callInterface}, {4, dtmfInterface}, {4, audioInterface}, {1, "org.example.Other"},
        {1, "zelkovar.Call.call1"}, {1, "org.example.\uff5e"}, {1, "org.example.\U0001f600"}});
}

static Gen<const PropertyValue *> values()
{
    return gen::map(below(propertyValues().size()), [](std::size_t i) { return &propertyValues()[i]; });
}

static const PropertyValue *named(const std::string &text)
{
    const PropertyValue *value = propertyValueAt(text);
    RC_ASSERT(value);
    return value;
}

static Gen<std::pair<std::string, const PropertyValue *>> property(const std::string &name, Gen<std::string> usual)
{
    return gen::apply([name](bool odd, const std::string &usualText,
                          const PropertyValue *any) { return std::make_pair(name, odd ? any : named(usualText)); },
        oneIn(5), std::move(usual), values());
}

static Gen<Properties> properties()
{
    using One = std::pair<std::string, const PropertyValue *>;
    const Gen<std::string> status = gen::map(statuses(), [](unsigned number) { return "u" + std::to_string(number); });
    const Gen<std::string> flag = texts({{2, "true"}, {1, "false"}});
    return gen::resize(6,
        gen::container<Properties>(
            gen::weightedOneOf<One>({{4, property("Status", status)}, {2, property("Incoming", flag)},
                {3, property("Holdable", flag)}, {1, property("RemoteName", texts({{1, R"("Ann")"}, {1, R"("Zoë")"}}))},
                {1, property("Uri", texts({{1, R"("sip:ann@example.org")"}}))}, {1, property("Other", flag)}})));
}

static Gen<InterfaceReport> interfaceReports()
{
    return gen::apply(
        [](const std::string &name, const Properties &all) {
            return InterfaceReport{name, name == callInterface || all.size() == 1 ? all : Properties()};
        },
        interfaceNames(), properties());
}

static Gen<Interfaces> usualCalls()
{
    return gen::apply(
        [](const Properties &all, bool plain, bool silent) {
            Interfaces interfaces{{callInterface, all}};
            if (!plain)
                interfaces.push_back({audioInterface, {}});
            if (!silent)
                interfaces.push_back({dtmfInterface, {}});
            return interfaces;
        },
        properties(), oneIn(3), oneIn(3));
}

static Gen<Interfaces> interfaceMaps()
{
    return gen::weightedOneOf<Interfaces>(
        {{3, usualCalls()}, {2, gen::resize(4, gen::container<Interfaces>(interfaceReports()))}});
}

static Gen<std::vector<std::string>> nameLists()
{
    using Names = std::vector<std::string>;
    return gen::weightedOneOf<Names>(
        {{2, gen::just(Names{callInterface})}, {3, gen::resize(4, gen::container<Names>(interfaceNames()))}});
}

static Gen<std::vector<ObjectReport>> snapshots()
{
    return gen::resize(4,
        gen::uniqueBy<std::vector<ObjectReport>>(gen::apply(
                                                     [](const std::string &path, const Interfaces &all) {
                                                         return ObjectReport{path, all};
                                                     },
                                                     objects(), interfaceMaps()),
            [](const ObjectReport &object) { return object.path; }));
}

// Each kind with its weight among some six hundred.
static Gen<StepKind> kinds()
{
    return pick<StepKind>({{8, StepKind::Configure}, {2, StepKind::ConfigureWithNull}, {2, StepKind::ConfigureAgain},
        {1, StepKind::Start}, {1, StepKind::Suspend}, {1, StepKind::Resume}, {1, StepKind::Finalize},
        {60, StepKind::Register}, {2, StepKind::RegisterBadly}, {2, StepKind::TakeName}, {20, StepKind::Leave},
        {4, StepKind::LeaveHalfWay}, {3, StepKind::ClaimDeparture}, {8, StepKind::ForgeAnswer}, {40, StepKind::Answer},
        {5, StepKind::AnswerWithMore}, {4, StepKind::AnswerBadly}, {6, StepKind::AnswerWithError}, {90, StepKind::Add},
        {3, StepKind::AddBadly}, {40, StepKind::Remove}, {2, StepKind::RemoveBadly}, {60, StepKind::Status},
        {6, StepKind::StatusBadly}, {20, StepKind::RequestMute}, {20, StepKind::RequestRoute},
        {6, StepKind::RequestBadly}, {16, StepKind::HostAnswer}, {16, StepKind::HostHangup}, {40, StepKind::HostHold},
        {6, StepKind::HostHoldByName}, {16, StepKind::HostDtmf}, {3, StepKind::HostDeflect}, {3, StepKind::HostMerge},
        {3, StepKind::HostSplit}, {5, StepKind::HostDial}, {12, StepKind::Mute}, {12, StepKind::SelectInput},
        {12, StepKind::SelectOutput}, {12, StepKind::Devices}});
}

static Gen<Step> steps()
{
    return gen::mapcat(kinds(), [](StepKind kind) {
        const auto only = [kind](std::initializer_list<StepKind> these) {
            return std::find(these.begin(), these.end(), kind) != these.end();
        };
        const bool reports = only({StepKind::Add, StepKind::LeaveHalfWay});
        const bool answers
            = only({StepKind::Answer, StepKind::AnswerWithMore, StepKind::AnswerWithError, StepKind::ForgeAnswer});
        const bool hasStatus = only({StepKind::Status});
        const bool claims = only({StepKind::ClaimDeparture});
        const bool forges = only({StepKind::ForgeAnswer});
        const bool aboutCall = isByApplication(kind) && kind >= StepKind::Add;
        return gen::build<Step>(gen::set(&Step::kind, gen::just(kind)), gen::set(&Step::atOnce, oneIn(4)),
            gen::set(&Step::application,
                claims          ? gen::just(char(stranger))
                    : forges    ? pick<char>({{1, stranger}, {1, 'B'}, {1, 'A'}})
                    : aboutCall ? senders()
                                : applications()),
            gen::set(&Step::manager, managers()), gen::set(&Step::object, objects()),
            gen::set(&Step::interfaces, reports ? interfaceMaps() : gen::just(Interfaces())),
            gen::set(&Step::names, only({StepKind::Remove}) ? nameLists() : gen::just(std::vector<std::string>())),
            gen::set(&Step::objects, answers ? snapshots() : gen::just(std::vector<ObjectReport>())),
            gen::set(
                &Step::number, hasStatus ? statuses() : gen::map(below(4), [](std::size_t i) { return unsigned(i); })),
            gen::set(&Step::on, gen::map(oneIn(3), [](bool off) { return !off; })),
            gen::set(&Step::text,
                claims || forges                 ? texts({{2, "A"}, {1, "B"}})
                    : only({StepKind::HostDtmf}) ? texts({{1, "1"}, {1, "12#"}, {1, ""}})
                                                 : devices()),
            gen::set(&Step::otherText, devices()));
    });
}

static Step step(StepKind kind)
{
    Step step;
    step.kind = kind;
    return step;
}

// Without a beginning, little could be done in most histories.
static Gen<History> beginnings()
{
    const History none;
    const History configured{step(StepKind::Configure)};
    const History registered{step(StepKind::Configure), step(StepKind::Register)};
    return gen::weightedElement<History>({{1, none}, {2, configured}, {6, registered}});
}

// Random histories; they shrink to fewer and simpler steps.
static Gen<History> histories()
{
    return gen::apply(
        [](History all, const History &rest) {
            all.insert(all.end(), rest.begin(), rest.end());
            return all;
        },
        beginnings(), gen::resize(longest, gen::container<History>(steps())));
}

namespace {

class Silent : public rc::detail::TestListener
{
public:
    void onTestCaseFinished(const rc::detail::CaseDescription &) override { }
    void onShrinkTried(const rc::detail::CaseDescription &, bool) override { }
    void onTestFinished(const rc::detail::TestMetadata &, const rc::detail::TestResult &) override { }
};

} // namespace

HistoriesResult checkHistories(std::uint64_t seed, int count, const std::function<std::string(const History &)> &run)
{
    HistoriesResult result;
    // The library prints the seed of its own configuration; let it be the one that counts.
    setenv("RC_PARAMS", ("seed=" + std::to_string(seed)).c_str(), 1);
    rc::detail::TestParams parameters;
    parameters.seed = seed;
    parameters.maxSuccess = count;
    const auto property = [&] {
        const History history = *histories();
        const std::string difference = run(history);
        if (difference.empty()) {
            result.passed += result.difference.empty() ? 1 : 0;
            return;
        }
        // Each further failure is of a smaller history.
        result.failed = history;
        result.difference = difference;
        RC_FAIL(difference);
    };
    Silent silent;
    rc::detail::checkTestable(property, rc::detail::TestMetadata(), parameters, silent);
    return result;
}
