// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#include "callmodel.h"

#include <algorithm>

static std::u16string utf16(const std::string &text)
{
    std::u16string units;
    for (std::size_t at = 0; at < text.size();) {
        const auto first = static_cast<unsigned char>(text[at]);
        const int length = first < 0x80 ? 1 : first < 0xe0 ? 2 : first < 0xf0 ? 3 : 4;
        char32_t point = length == 1 ? first : first & (0x7f >> length);
        for (int i = 1; i < length; ++i)
            point = point << 6 | (static_cast<unsigned char>(text[at + std::size_t(i)]) & 0x3f);
        at += std::size_t(length);
        if (point < 0x10000) {
            units += char16_t(point);
        } else {
            units += char16_t(0xd800 + ((point - 0x10000) >> 10));
            units += char16_t(0xdc00 + ((point - 0x10000) & 0x3ff));
        }
    }
    return units;
}

bool Utf16Less::operator()(const std::string &left, const std::string &right) const
{
    return utf16(left) < utf16(right);
}

static const std::string statusSignal = std::string(callInterface) + ".StatusChanged";
static const std::string muteSignal = std::string(audioInterface) + ".RequestMute";
static const std::string routeSignal = std::string(audioInterface) + ".RequestAudioRoute";

static std::string quoted(const std::string &text) { return '"' + text + '"'; }

static std::string text(bool value) { return value ? "true" : "false"; }

// Ascending by name; of the same name, what was sent last comes first, and is what a look-up finds.
template <typename Entries, typename Name>
static Entries asReceived(Entries entries, Name name)
{
    std::reverse(entries.begin(), entries.end());
    std::stable_sort(entries.begin(), entries.end(),
        [&](const auto &left, const auto &right) { return Utf16Less()(name(left), name(right)); });
    return entries;
}

static Interfaces asReceived(const Interfaces &sent)
{
    Interfaces received = asReceived(sent, [](const InterfaceReport &report) { return report.name; });
    for (InterfaceReport &report : received)
        report.properties = asReceived(report.properties, [](const auto &property) { return property.first; });
    return received;
}

static const InterfaceReport *find(const Interfaces &received, const std::string &name)
{
    const auto found = std::find_if(
        received.begin(), received.end(), [&](const InterfaceReport &report) { return report.name == name; });
    return found == received.end() ? nullptr : &*found;
}

template <typename Entries, typename Text>
static std::string joined(const Entries &entries, Text text)
{
    std::string all;
    for (const auto &entry : entries)
        all += (all.empty() ? "" : ",") + text(entry);
    return all;
}

static std::string text(const Interfaces &received)
{
    const auto property = [](const auto &entry) { return quoted(entry.first) + ":" + entry.second->text; };
    return "{" + joined(received, [&](const InterfaceReport &report) {
        return quoted(report.name) + ":{" + joined(report.properties, property) + "}";
    }) + "}";
}

static std::string text(const std::vector<std::string> &names) { return "[" + joined(names, quoted) + "]"; }

const std::vector<AudioDeviceRow> &audioDeviceRows()
{
    static const std::vector<AudioDeviceRow> rows{
        {"mic", 4, true, false, "Microphone"}, {"ear", 1, false, true, "Earpiece"}, {"headset", 3, true, true, ""}};
    return rows;
}

std::string audioDevicesText(unsigned count)
{
    std::string all;
    for (unsigned i = 0; i < count; ++i) {
        const AudioDeviceRow &row = audioDeviceRows()[i];
        all += (i ? "," : "") + ("(" + quoted(row.id)) + ",i" + std::to_string(row.type) + "," + text(row.isInput) + ","
            + text(row.isOutput) + "," + quoted(row.name) + ",{})";
    }
    return "[" + all + "]";
}

const PropertyValue *CallModel::Call::property(const std::string &name) const
{
    const auto found
        = std::find_if(properties.begin(), properties.end(), [&](const auto &entry) { return entry.first == name; });
    return found == properties.end() ? nullptr : found->second;
}

int CallModel::Call::status() const
{
    // Disconnected, disconnected, dialing, incoming, disconnected, active, active, held; else none.
    static const int hostStatus[] = {7, 7, 3, 5, 7, 1, 1, 2};
    return remoteStatus < 8 ? hostStatus[remoteStatus] : 0;
}

bool CallModel::Call::isHoldable() const
{
    const PropertyValue *holdable = property("Holdable");
    return holdable && holdable->asBool;
}

void CallModel::connect(char application)
{
    Application &known = m_applications[application];
    known.connections += known.connected ? 0 : 1;
    known.connected = true;
}

std::string CallModel::nameOf(char application) const
{
    const auto known = m_applications.find(application);
    return known == m_applications.end() ? "" : application + std::to_string(known->second.connections);
}

// The step as if the application did it in whose place another answers.
static Step victimOf(Step step)
{
    step.application = step.text.empty() ? stranger : step.text[0];
    return step;
}

const CallModel::Manager *CallModel::manager(const Step &step) const
{
    const std::string service = nameOf(step.application);
    const auto found = std::find_if(m_managers.begin(), m_managers.end(),
        [&](const Manager &manager) { return manager.service == service && manager.path == step.manager; });
    return found == m_managers.end() ? nullptr : &*found;
}

CallModel::Manager *CallModel::manager(const Step &step)
{
    return const_cast<Manager *>(std::as_const(*this).manager(step));
}

std::vector<std::pair<const CallModel::Manager *, const CallModel::Call *>> CallModel::callsOf(const Step &step) const
{
    std::vector<std::pair<const Manager *, const Call *>> calls;
    for (const Manager &manager : m_managers) {
        const auto call = manager.calls.find(step.object);
        if (manager.service == nameOf(step.application) && call != manager.calls.end())
            calls.emplace_back(&manager, &call->second);
    }
    return calls;
}

std::vector<std::string> CallModel::callIds(const Step &step) const
{
    std::vector<std::string> ids;
    for (const auto &[manager, call] : callsOf(step))
        ids.push_back(call->id);
    return ids;
}

bool CallModel::isPossible(const Step &step) const
{
    if (step.kind == StepKind::ForgeAnswer) {
        const Manager *victim = manager(victimOf(step));
        return victim && victim->awaitsSnapshot && step.application != victimOf(step).application;
    }
    const Manager *known = manager(step);
    if (isAnswer(step.kind))
        return known && (known->awaitsSnapshot || known->isForged);
    if (isCommand(step.kind))
        return !callsOf(step).empty();
    if (step.kind == StepKind::HostDial)
        return known && known->hasProvider;
    if (step.kind == StepKind::ConfigureAgain)
        return m_configured;
    // Signals of an application that is not there yet would be a stranger's: of those, one is enough.
    const bool needsConnection = isLeave(step.kind) || isReport(step.kind) || isCallSignal(step.kind);
    return !needsConnection || isConnected(step.application) || step.application == stranger;
}

bool CallModel::isConnected(char application) const
{
    const auto known = m_applications.find(application);
    return known != m_applications.end() && known->second.connected;
}

const std::map<StepKind, CallModel::Action> &CallModel::actions()
{
    static const std::map<StepKind, Action> all{
        {StepKind::Configure, &CallModel::doConfigure},
        {StepKind::ConfigureWithNull, &CallModel::doConfigure},
        {StepKind::ConfigureAgain, &CallModel::doConfigure},
        {StepKind::Register, &CallModel::doRegister},
        {StepKind::RegisterBadly, &CallModel::doRegisterBadly},
        {StepKind::Leave, &CallModel::doLeave},
        {StepKind::LeaveHalfWay, &CallModel::doLeave},
        {StepKind::ForgeAnswer, &CallModel::doForgeAnswer},
        {StepKind::Answer, &CallModel::doAnswer},
        {StepKind::AnswerWithMore, &CallModel::doAnswer},
        {StepKind::AnswerBadly, &CallModel::doAnswerBadly},
        {StepKind::AnswerWithError, &CallModel::doAnswerBadly},
        {StepKind::Add, &CallModel::doAdd},
        {StepKind::Remove, &CallModel::doRemove},
        {StepKind::Status, &CallModel::doStatus},
        {StepKind::RequestMute, &CallModel::doRequestMute},
        {StepKind::RequestRoute, &CallModel::doRequestRoute},
        {StepKind::HostAnswer, &CallModel::doHostCommand},
        {StepKind::HostHangup, &CallModel::doHostCommand},
        {StepKind::HostHold, &CallModel::doHold},
        {StepKind::HostHoldByName, &CallModel::doHold},
        {StepKind::HostDtmf, &CallModel::doDtmf},
        {StepKind::HostDial, &CallModel::doDial},
        {StepKind::Mute, &CallModel::doMute},
        {StepKind::SelectInput, &CallModel::doSelectInput},
        {StepKind::SelectOutput, &CallModel::doSelectOutput},
        {StepKind::Devices, &CallModel::doDevices},
    };
    return all;
}

void CallModel::take(const Step &step)
{
    if (isByApplication(step.kind))
        connect(step.application);
    const auto action = actions().find(step.kind);
    if (action != actions().end())
        (this->*action->second)(step);
    flush();
}

void CallModel::flush()
{
    for (const std::string &line : std::exchange(m_now, {}))
        m_log.then(line);
}

void CallModel::perhaps(const std::string &line)
{
    flush();
    m_log.perhaps(line);
}

template <typename Function>
Lines CallModel::effectsOf(Function action)
{
    Lines before = std::exchange(m_now, {});
    action();
    return std::exchange(m_now, std::move(before));
}

void CallModel::anyOrder(const std::vector<Lines> &blocks)
{
    flush();
    m_log.inAnyOrder(blocks);
}

void CallModel::doConfigure(const Step &step)
{
    host("configured: " + text(!m_configured));
    m_configured = m_configured || step.kind != StepKind::ConfigureWithNull;
}

void CallModel::doRegister(const Step &step)
{
    if (!manager(step)) {
        Manager fresh;
        fresh.service = nameOf(step.application);
        fresh.path = step.manager;
        fresh.hasProvider = fresh.awaitsSnapshot = m_configured;
        m_managers.push_back(fresh);
        if (m_configured) {
            subscribe(fresh, fresh.path, "org.freedesktop.DBus.ObjectManager.InterfacesAdded");
            subscribe(fresh, fresh.path, "org.freedesktop.DBus.ObjectManager.InterfacesRemoved");
            bus("to " + fresh.service + " " + fresh.path + " org.freedesktop.DBus.ObjectManager.GetManagedObjects()");
            host("provider added " + fresh.id());
        }
    }
    bus("reply to " + nameOf(step.application) + " ()");
}

void CallModel::doRegisterBadly(const Step &step) { bus("error to " + nameOf(step.application)); }

void CallModel::doLeave(const Step &step)
{
    const std::string service = nameOf(step.application);
    std::vector<Lines> blocks;
    for (auto manager = m_managers.begin(); manager != m_managers.end();) {
        if (manager->service == service) {
            blocks.push_back(effectsOf([&] { removeEverything(*manager); }));
            manager = m_managers.erase(manager);
        } else {
            ++manager;
        }
    }
    // Which of an application's call managers goes first is free.
    anyOrder(blocks);
    m_applications[step.application].connected = false;
}

void CallModel::removeEverything(Manager &manager)
{
    const auto objects = manager.objects;
    for (auto [path, names] : objects) {
        std::sort(names.begin(), names.end(), Utf16Less());
        reportRemoved(manager, path, names);
    }
    if (manager.hasProvider)
        host("provider removed " + manager.id());
}

void CallModel::doAnswer(const Step &step)
{
    Manager &asked = *manager(step);
    if (!std::exchange(asked.awaitsSnapshot, false))
        return;
    const auto byPath
        = asReceived(step.objects, [](const ObjectReport &report) -> const std::string & { return report.path; });
    for (const ObjectReport &report : byPath)
        reportAdded(asked, report.path, report.interfaces);
}

void CallModel::doAnswerBadly(const Step &step) { manager(step)->awaitsSnapshot = false; }

void CallModel::doForgeAnswer(const Step &step)
{
    Manager &victim = *manager(victimOf(step));
    victim.awaitsSnapshot = false;
    victim.isForged = true;
}

void CallModel::doAdd(const Step &step)
{
    Manager *reporter = manager(step);
    if (reporter && reporter->hasProvider)
        reportAdded(*reporter, step.object, step.interfaces);
}

void CallModel::doRemove(const Step &step)
{
    Manager *reporter = manager(step);
    if (reporter && reporter->hasProvider)
        reportRemoved(*reporter, step.object, step.names);
}

void CallModel::reportAdded(Manager &manager, const std::string &object, const Interfaces &interfaces)
{
    const Interfaces received = asReceived(interfaces);
    std::vector<std::string> &names = manager.objects[object];
    for (const InterfaceReport &report : received)
        names.push_back(report.name);

    const auto known = manager.calls.find(object);
    const bool isNew = known == manager.calls.end();
    if (isNew && !find(received, callInterface))
        return;
    if (isNew)
        createCall(manager, object, received);
    else
        addInterfaces(manager, known->second, received, true);
    bus("broadcast InterfacesAdded(" + quoted(manager.service) + "," + object + "," + text(received) + ")");
    if (isNew) {
        host("call added " + manager.calls[object].id + " " + manager.id());
        host("calls changed " + manager.id());
    }
}

void CallModel::createCall(Manager &manager, const std::string &object, const Interfaces &received)
{
    Call &call = manager.calls[object];
    call.id = "h" + std::to_string(++m_calls);
    call.object = object;
    call.properties = find(received, callInterface)->properties;
    const PropertyValue *status = call.property("Status");
    call.remoteStatus = status ? status->asNumber : 0;
    subscribe(manager, object, statusSignal);
    addInterfaces(manager, call, received, false);
}

// What a call tells while it is made, nobody can hear yet.
void CallModel::addInterfaces(Manager &manager, Call &call, const Interfaces &received, bool announced)
{
    if (!call.dtmf && find(received, dtmfInterface)) {
        call.dtmf = true;
        if (announced)
            host(call.id + " dtmf true");
    }
    if (!call.audio && find(received, audioInterface)) {
        call.audio = true;
        m_audioCalls.emplace_back(&manager, &call);
        subscribe(manager, call.object, muteSignal);
        subscribe(manager, call.object, routeSignal);
        send(manager, call,
            std::string(audioInterface) + ".UpdateAudioRouteState(" + audioDevicesText(m_devices) + "," + text(m_muted)
                + "," + quoted(m_input) + "," + quoted(m_output) + ")");
    }
}

void CallModel::reportRemoved(Manager &manager, const std::string &object, const std::vector<std::string> &names)
{
    const auto known = manager.objects.find(object);
    if (known != manager.objects.end() && !names.empty()) {
        for (const std::string &name : names)
            known->second.erase(std::remove(known->second.begin(), known->second.end(), name), known->second.end());
        if (known->second.empty())
            manager.objects.erase(known);
    }
    if (manager.calls.count(object) == 0)
        return;
    bus("broadcast InterfacesRemoved(" + quoted(manager.service) + "," + object + "," + text(names) + ")");
    if (std::find(names.begin(), names.end(), callInterface) != names.end())
        removeCall(manager, object);
}

void CallModel::removeCall(Manager &manager, const std::string &object)
{
    const auto call = manager.calls.find(object);
    unsubscribe(manager, object, statusSignal);
    if (call->second.audio) {
        unsubscribe(manager, object, muteSignal);
        unsubscribe(manager, object, routeSignal);
    }
    host("call removed " + call->second.id + " " + manager.id());
    host("calls changed " + manager.id());
    m_audioCalls.erase(std::remove(m_audioCalls.begin(), m_audioCalls.end(),
                           std::pair<const Manager *, const Call *>(&manager, &call->second)),
        m_audioCalls.end());
    manager.calls.erase(call);
}

static std::string ruleOf(const std::string &service, const std::string &object, const std::string &member)
{
    return "match " + service + " " + object + " " + member;
}

void CallModel::subscribe(const Manager &manager, const std::string &object, const std::string &member)
{
    const std::string rule = ruleOf(manager.service, object, member);
    if (m_rules[rule]++ > 0)
        return;
    // Whether one that was dropped just before is still there depends on when the event loop turns.
    if (m_droppedRules.count(rule) != 0)
        perhaps(rule);
    else
        bus(rule);
}

void CallModel::unsubscribe(const Manager &manager, const std::string &object, const std::string &member)
{
    const std::string rule = ruleOf(manager.service, object, member);
    if (--m_rules[rule] == 0)
        m_droppedRules.insert(rule);
}

void CallModel::doStatus(const Step &step)
{
    std::vector<Lines> blocks;
    for (Manager &manager : m_managers) {
        const auto call = manager.calls.find(step.object);
        if (manager.service != nameOf(step.application) || call == manager.calls.end())
            continue;
        call->second.remoteStatus = step.number;
        blocks.push_back(
            effectsOf([&, call = &call->second] { host(call->id + " status " + std::to_string(call->status())); }));
    }
    // An object that two call managers report is two calls; which hears of it first is free.
    anyOrder(blocks);
}

// Requests are heeded while the call is active or dialing.
static bool mayAsk(int status) { return status == 1 || status == 3; }

void CallModel::doRequestMute(const Step &step)
{
    for (const auto &[manager, call] : callsOf(step)) {
        if (call->audio && mayAsk(call->status())) {
            host("mute " + text(step.on));
            setMuted(step.on);
        }
    }
}

void CallModel::doRequestRoute(const Step &step)
{
    for (const auto &[manager, call] : callsOf(step)) {
        if (call->audio && mayAsk(call->status())) {
            host("input " + step.text);
            setInput(step.text);
            host("output " + step.otherText);
            setOutput(step.otherText);
        }
    }
}

void CallModel::send(const Manager &manager, const Call &call, const std::string &member)
{
    bus("to " + manager.service + " " + call.object + " " + member);
}

void CallModel::doHostCommand(const Step &step)
{
    const std::string member = step.kind == StepKind::HostAnswer ? ".Accept()" : ".Reject(u1)";
    for (const auto &[manager, call] : callsOf(step))
        send(*manager, *call, callInterface + member);
}

void CallModel::doHold(const Step &step)
{
    const bool on = step.kind == StepKind::HostHoldByName || step.on;
    for (const auto &[manager, call] : callsOf(step)) {
        if (on && !call->isHoldable())
            send(*manager, *call, std::string(callInterface) + ".Reject(u1)");
        if (on != (call->remoteStatus == 7))
            send(*manager, *call, std::string(callInterface) + ".SetHold(" + text(on) + ")");
    }
}

void CallModel::doDtmf(const Step &step)
{
    for (const auto &[manager, call] : callsOf(step))
        if (call->dtmf)
            send(*manager, *call, std::string(dtmfInterface) + ".SendDTMF(" + quoted(step.text) + ")");
}

void CallModel::doDial(const Step &step)
{
    manager(step)->errorString = "cannot dial with this provider";
    host("dialled: false");
}

void CallModel::doMute(const Step &step) { setMuted(step.on); }
void CallModel::doSelectInput(const Step &step) { setInput(step.text); }
void CallModel::doSelectOutput(const Step &step) { setOutput(step.text); }

void CallModel::doDevices(const Step &step)
{
    m_devices = step.number;
    pushState();
}

void CallModel::setMuted(bool muted)
{
    m_muted = muted;
    pushRoute();
}

void CallModel::setInput(const std::string &id)
{
    m_input = id;
    pushRoute();
}

void CallModel::setOutput(const std::string &id)
{
    m_output = id;
    pushRoute();
}

void CallModel::pushRoute()
{
    for (const auto &[manager, call] : m_audioCalls)
        send(*manager, *call,
            std::string(audioInterface) + ".UpdateAudioRoute(" + text(m_muted) + "," + quoted(m_input) + ","
                + quoted(m_output) + ")");
}

void CallModel::pushState()
{
    for (const auto &[manager, call] : m_audioCalls)
        send(*manager, *call,
            std::string(audioInterface) + ".UpdateAudioRouteState(" + audioDevicesText(m_devices) + "," + text(m_muted)
                + "," + quoted(m_input) + "," + quoted(m_output) + ")");
}

Lines CallModel::registry() const
{
    Lines lines;
    for (const Manager &manager : m_managers)
        lines.push_back(manager.id());
    std::sort(lines.begin(), lines.end());
    return lines;
}

Lines CallModel::state() const
{
    Lines lines;
    for (const Manager &manager : m_managers) {
        if (manager.hasProvider)
            lines.push_back(manager.id() + " type ringlet error " + quoted(manager.errorString));
        for (const auto &[path, call] : manager.calls) {
            const auto string = [call = &call](const char *name) {
                const PropertyValue *value = call->property(name);
                return quoted(value ? value->asText : "");
            };
            const PropertyValue *incoming = call.property("Incoming");
            lines.push_back(manager.id() + " " + call.id + " status " + std::to_string(call.status()) + " line "
                + string("RemoteName") + " uri " + string("Uri") + " app " + quoted(m_appId) + " incoming "
                + text(incoming && incoming->asBool) + " holdable " + text(call.isHoldable()) + " dtmf "
                + text(call.dtmf) + " remoteheld " + text(call.remoteStatus == 7));
        }
    }
    std::sort(lines.begin(), lines.end());
    return lines;
}
