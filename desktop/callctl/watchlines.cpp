// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#include "watchlines.h"

#include "json.h"
#include "programs/printabletext.h"

#include <QtCore/QHash>
#include <QtCore/QVector>
#include <algorithm>
#include <cstdio>

// Bytes that may wait to be read before changes are put together.
static const int mostBytes = 1 << 16;

// A key and its value, in the form that is printed.
using Field = QPair<QString, QString>;
using Fields = QVector<Field>;

static bool isBare(QChar unit)
{
    const ushort code = unit.unicode();
    return (code >= 'a' && code <= 'z') || (code >= 'A' && code <= 'Z') || (code >= '0' && code <= '9')
        || QStringLiteral("_./:@+-").contains(unit);
}

static QString word(const QString &text)
{
    const bool bare = !text.isEmpty() && std::all_of(text.cbegin(), text.cend(), isBare);
    return bare ? text : Json::quoted(text);
}

static QString yesNo(bool value) { return value ? QStringLiteral("yes") : QStringLiteral("no"); }

// A property of a call, and how it is told.
struct CallField
{
    QString key;
    QString property;
    QString (*form)(const QVariant &value);
};

static QString wordForm(const QVariant &value) { return word(value.toString()); }
static QString quotedForm(const QVariant &value) { return Json::quoted(value.toString()); }
static QString numberForm(const QVariant &value) { return QString::number(value.toInt()); }
static QString yesNoForm(const QVariant &value) { return yesNo(value.toBool()); }
static QString directionForm(const QVariant &value)
{
    return value.toBool() ? QStringLiteral("incoming") : QStringLiteral("outgoing");
}

static const QVector<CallField> callFields = {
    {QStringLiteral("status"), QStringLiteral("StatusText"), wordForm},
    {QStringLiteral("direction"), QStringLiteral("Incoming"), directionForm},
    {QStringLiteral("name"), QStringLiteral("LineId"), quotedForm},
    {QStringLiteral("address"), QStringLiteral("Uri"), quotedForm},
    {QStringLiteral("app"), QStringLiteral("AppId"), quotedForm},
    {QStringLiteral("duration"), QStringLiteral("Duration"), numberForm},
    {QStringLiteral("provider"), QStringLiteral("ProviderId"), wordForm},
    {QStringLiteral("ongoing"), QStringLiteral("Ongoing"), yesNoForm},
    {QStringLiteral("remote-held"), QStringLiteral("RemoteHeld"), yesNoForm},
    {QStringLiteral("holdable"), QStringLiteral("Holdable"), yesNoForm},
    {QStringLiteral("dtmf"), QStringLiteral("SupportsDtmf"), yesNoForm},
    {QStringLiteral("supports-multiparty"), QStringLiteral("SupportsMultiparty"), yesNoForm},
    {QStringLiteral("multiparty"), QStringLiteral("Multiparty"), yesNoForm},
    {QStringLiteral("emergency"), QStringLiteral("Emergency"), yesNoForm},
    {QStringLiteral("forwarded"), QStringLiteral("Forwarded"), yesNoForm},
};

static Fields allFields(const CallInfo &call)
{
    Fields fields;
    for (const CallField &field : callFields)
        fields.append({field.key, field.form(call.properties.value(field.property))});
    return fields;
}

static Fields changedFields(const CallInfo &before, const CallInfo &after)
{
    Fields fields;
    for (const CallField &field : callFields) {
        const QVariant value = after.properties.value(field.property);
        if (before.properties.value(field.property) != value)
            fields.append({field.key, field.form(value)});
    }
    return fields;
}

static Fields allFields(const AudioDevice &device)
{
    return {
        {QStringLiteral("type"), word(device.typeText())},
        {QStringLiteral("input"), yesNo(device.isInput)},
        {QStringLiteral("output"), yesNo(device.isOutput)},
        {QStringLiteral("name"), Json::quoted(device.name)},
    };
}

static Fields changedFields(const AudioDevice &before, const AudioDevice &after)
{
    const Fields old = allFields(before);
    Fields fields = allFields(after);
    fields.erase(std::remove_if(fields.begin(), fields.end(), [&](const Field &field) { return old.contains(field); }),
        fields.end());
    return fields;
}

// All of a host that was not there is new.
static Fields changedSelection(const HostState &before, const HostState &after)
{
    const bool isNew = before.isPresent != after.isPresent;
    Fields fields;
    if (isNew || before.inputDevice != after.inputDevice)
        fields.append({QStringLiteral("input"), word(after.inputDevice)});
    if (isNew || before.outputDevice != after.outputDevice)
        fields.append({QStringLiteral("output"), word(after.outputDevice)});
    if (isNew || before.microphoneMuted != after.microphoneMuted)
        fields.append({QStringLiteral("muted"), yesNo(after.microphoneMuted)});
    return fields;
}

static QString lineOf(const QString &subject, const char *event, const Fields &fields = {})
{
    QString text = subject + QLatin1Char(' ') + QLatin1String(event);
    for (const Field &field : fields)
        text += QLatin1Char(' ') + field.first + QLatin1Char('=') + field.second;
    return text;
}

template <typename Thing>
static QString changeOf(const QString &subject, const Thing *before, const Thing *after)
{
    if (!after)
        return before ? lineOf(subject, "removed") : QString();
    if (!before)
        return lineOf(subject, "added", allFields(*after));
    const Fields fields = changedFields(*before, *after);
    return fields.isEmpty() ? QString() : lineOf(subject, "changed", fields);
}

void WatchLines::print(const QString &line)
{
    if (!line.isEmpty())
        m_bytes += line.toUtf8() + '\n';
}

// --- Providers

void WatchLines::printProvider(const HostState &state, const QString &id)
{
    const Provider *before = m_told.provider(id);
    const Provider *after = state.provider(id);
    if (before && after && *before == *after)
        return;
    const QString subject = QStringLiteral("provider ") + word(id);
    if (before) {
        print(lineOf(subject, "removed"));
        m_told.providers.removeAll(Provider(*before));
    }
    if (after) {
        print(lineOf(subject, "added", {{QStringLiteral("type"), word(after->type)}}));
        m_told.providers.append(*after);
    }
}

// --- Audio

static QHash<QString, AudioDevice> byId(const AudioDeviceList &devices)
{
    QHash<QString, AudioDevice> result;
    for (const AudioDevice &device : devices)
        result.insert(device.id, device);
    return result;
}

static const AudioDevice *find(const QHash<QString, AudioDevice> &devices, const QString &id)
{
    const auto found = devices.constFind(id);
    return found == devices.cend() ? nullptr : &*found;
}

void WatchLines::printAudio(const HostState &state)
{
    const QHash<QString, AudioDevice> before = byId(m_told.devices);
    const QHash<QString, AudioDevice> after = byId(state.devices);
    const auto subject = [](const AudioDevice &device) { return QStringLiteral("device ") + word(device.id); };
    for (const AudioDevice &device : qAsConst(m_told.devices)) {
        if (!after.contains(device.id))
            print(lineOf(subject(device), "removed"));
    }
    for (const AudioDevice &device : state.devices)
        print(changeOf(subject(device), find(before, device.id), &device));
    const Fields selection = state.isPresent ? changedSelection(m_told, state) : Fields();
    if (!selection.isEmpty())
        print(lineOf(QStringLiteral("audio"), "changed", selection));
    m_told.devices = state.devices;
    m_told.inputDevice = state.inputDevice;
    m_told.outputDevice = state.outputDevice;
    m_told.microphoneMuted = state.microphoneMuted;
}

// --- Calls

static const CallInfo *find(const QMap<CallPath, CallInfo> &calls, const CallPath &path)
{
    const auto found = calls.constFind(path);
    return found == calls.cend() ? nullptr : &*found;
}

void WatchLines::printCall(const HostState &state, const CallPath &path)
{
    const CallInfo *before = find(m_told.calls, path);
    const CallInfo *after = find(state.calls, path);
    if (!before && !after)
        return;
    print(changeOf(QStringLiteral("call ") + word((after ? after : before)->id()), before, after));
    if (after)
        m_told.calls.insert(path, *after);
    else
        m_told.calls.remove(path);
}

// --- All of it

void WatchLines::noteThingsOf(const HostState &state)
{
    for (const Provider &provider : state.providers) {
        if (!m_providers.contains(provider.id))
            m_providers.append(provider.id);
    }
    for (auto call = state.calls.cbegin(); call != state.calls.cend(); ++call)
        m_calls.insert(call.key(), true);
}

void WatchLines::noteEverything(const HostState &state)
{
    noteThingsOf(m_told);
    noteThingsOf(state);
    m_audio = true;
}

void WatchLines::printNoted(const HostState &state)
{
    for (const QString &id : qAsConst(m_providers))
        printProvider(state, id);
    m_providers.clear();
    if (m_audio)
        printAudio(state);
    m_audio = false;
    for (auto call = m_calls.cbegin(); call != m_calls.cend(); ++call)
        printCall(state, call.key());
    m_calls.clear();
    m_told.isPresent = state.isPresent;
}

void WatchLines::printIfThereIsRoom(const HostState &state)
{
    if (m_bytes.size() >= mostBytes)
        return;
    if (m_isGone) {
        noteEverything({});
        printNoted({});
        print(QStringLiteral("host gone"));
        noteEverything(state);
    }
    m_isGone = false;
    if (!state.isPresent)
        return;
    printNoted(state);
    if (m_isReady)
        print(QStringLiteral("host ready"));
    m_isReady = false;
}

void WatchLines::noteReady(const HostState &state)
{
    m_isReady = true;
    noteEverything(state);
    printIfThereIsRoom(state);
}

void WatchLines::noteCall(const HostState &state, const QString &path)
{
    m_calls.insert({path}, true);
    printIfThereIsRoom(state);
}

void WatchLines::noteProvider(const HostState &state, const QString &id)
{
    if (!m_providers.contains(id))
        m_providers.append(id);
    printIfThereIsRoom(state);
}

void WatchLines::noteAudio(const HostState &state)
{
    m_audio = true;
    printIfThereIsRoom(state);
}

void WatchLines::noteGone()
{
    // Of a host that was never told to be ready there is nothing to tell.
    m_isGone = m_isGone || m_told.isPresent;
    m_isReady = false;
    printIfThereIsRoom({});
}

void WatchLines::noteFailure(const QString &reason)
{
    std::fprintf(stderr, "callctl: %s; waiting for it\n", qUtf8Printable(PrintableText::printable(reason)));
}

QByteArray WatchLines::take(const HostState &state)
{
    QByteArray bytes;
    bytes.swap(m_bytes);
    printIfThereIsRoom(state);
    return bytes + std::exchange(m_bytes, {});
}
