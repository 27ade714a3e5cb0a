// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#ifndef CALLCTL_HOSTSTATE_H
#define CALLCTL_HOSTSTATE_H

#include <QtCore/QList>
#include <QtCore/QMap>
#include <QtCore/QMetaType>
#include <QtCore/QString>
#include <QtCore/QVariantMap>
#include <QtDBus/QDBusArgument>

/** (ss) */
struct Provider
{
    QString id;
    QString type;
};
using ProviderList = QList<Provider>;

/** (sibbsa{sv}) */
struct AudioDevice
{
    QString id;
    int type = 0;
    bool isInput = false;
    bool isOutput = false;
    QString name;
    QVariantMap properties;

    /** The kind of device in a word. */
    QString typeText() const;
};
using AudioDeviceList = QList<AudioDevice>;

/** The properties of org.tarnwickle.voicecall.Call1 by their names. */
struct CallInfo
{
    QVariantMap properties;

    QString text(const char *property) const { return properties.value(QLatin1String(property)).toString(); }
    bool flag(const char *property) const { return properties.value(QLatin1String(property)).toBool(); }

    QString id() const { return text("HandlerId"); }
    QString status() const { return text("StatusText"); }
    QString direction() const;
    int duration() const { return properties.value(QStringLiteral("Duration")).toInt(); }
};

/** The object path of a call; in order they are as the calls came: c2 is before c10. */
struct CallPath
{
    QString path;
};
bool operator<(const CallPath &left, const CallPath &right);

/** All that the host shows at one moment. */
struct HostState
{
    /** Whether there is a host; nothing else is set without. */
    bool isPresent = false;
    QMap<CallPath, CallInfo> calls;
    /** As they came. */
    ProviderList providers;
    AudioDeviceList devices;
    QString inputDevice;
    QString outputDevice;
    bool microphoneMuted = false;

    /** Null when there is none of this id; valid until the providers change. */
    const Provider *provider(const QString &id) const;
};

bool operator==(const Provider &left, const Provider &right);
bool operator==(const AudioDevice &left, const AudioDevice &right);

QDBusArgument &operator<<(QDBusArgument &argument, const Provider &provider);
const QDBusArgument &operator>>(const QDBusArgument &argument, Provider &provider);
QDBusArgument &operator<<(QDBusArgument &argument, const AudioDevice &device);
const QDBusArgument &operator>>(const QDBusArgument &argument, AudioDevice &device);

Q_DECLARE_METATYPE(Provider)
Q_DECLARE_METATYPE(ProviderList)
Q_DECLARE_METATYPE(AudioDevice)
Q_DECLARE_METATYPE(AudioDeviceList)

#endif
