// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#include "options.h"

#include <QtCore/QCommandLineParser>
#include <QtCore/QRegularExpression>

static const QString deviceForm = QStringLiteral("HOST-DEVICE=DRIVER,DEVICE");

static bool readAddress(const QString &text, QString *host, quint16 *port)
{
    static const QRegularExpression form(QStringLiteral("^(\\[[0-9a-fA-F:.]+\\]|[^:\\s]+):(\\d{1,5})$"));
    const QRegularExpressionMatch match = form.match(text);
    bool isPort = false;
    *port = match.captured(2).toUShort(&isPort);
    *host = match.captured(1).remove(QLatin1Char('[')).remove(QLatin1Char(']'));
    return isPort && *port > 0;
}

static QString readDevices(const QString &option, const QStringList &pairs, DeviceMap *devices)
{
    for (const QString &pair : pairs) {
        if (!devices->add(pair))
            return QStringLiteral("--%1: \"%2\" is not %3, or its device was given before")
                .arg(option, pair, deviceForm);
    }
    return {};
}

QString Options::read(const QStringList &arguments)
{
    const QCommandLineOption control{QStringLiteral("control"),
        QStringLiteral("Where baresip's ctrl_tcp listens [127.0.0.1:4444]."), QStringLiteral("HOST:PORT"),
        QStringLiteral("127.0.0.1:4444")};
    const QCommandLineOption input{QStringLiteral("input"),
        QStringLiteral("While the host's device is selected, baresip uses this source; may be repeated."), deviceForm};
    const QCommandLineOption output{
        QStringLiteral("output"), QStringLiteral("The same for its player; may be repeated."), deviceForm};
    const QCommandLineOption help{{QStringLiteral("h"), QStringLiteral("help")}, QStringLiteral("Show this.")};
    const QCommandLineOption version{QStringLiteral("version"), QStringLiteral("Show the version.")};

    QCommandLineParser parser;
    parser.setApplicationDescription(QStringLiteral("Shows the calls of a running baresip in the voice-call host."));
    parser.addOptions({control, input, output, help, version});
    if (!parser.parse(arguments))
        return parser.errorText();
    if (!parser.positionalArguments().isEmpty())
        return QStringLiteral("\"%1\" is no option").arg(parser.positionalArguments().constFirst());
    if (parser.isSet(help))
        answer = parser.helpText() + QStringLiteral("\nExit code: 0 done, 2 wrong usage, 3 no bus.");
    if (parser.isSet(version))
        answer = QStringLiteral("ringlet-baresip " RINGLET_VERSION);
    if (!readAddress(parser.value(control), &host, &port))
        return QStringLiteral("--control: \"%1\" is no HOST:PORT; one is like 127.0.0.1:4444")
            .arg(parser.value(control));
    const QString fault = readDevices(QStringLiteral("input"), parser.values(input), &inputs);
    return fault.isEmpty() ? readDevices(QStringLiteral("output"), parser.values(output), &outputs) : fault;
}
