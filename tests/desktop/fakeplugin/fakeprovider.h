// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#ifndef TESTS_FAKEPROVIDER_H
#define TESTS_FAKEPROVIDER_H

#include <abstractvoicecallprovider.h>

#include <QtCore/QMap>

class FakeHandler;

/** A provider of the type "fake"; it dials numbers that start with a digit, and refuses others. */
class FakeProvider : public AbstractVoiceCallProvider
{
    Q_OBJECT

public:
    FakeProvider(const QString &id, QObject *parent);

    /** The calls that voiceCalls() tells of. */
    QMap<QString, FakeHandler *> handlers;

    QString providerId() const override { return m_id; }
    QString providerType() const override { return QStringLiteral("fake"); }
    QList<AbstractVoiceCallHandler *> voiceCalls() const override;
    QString errorString() const override { return m_error; }

public Q_SLOTS:
    bool dial(const QString &msisdn) override;

private:
    QString m_id;
    QString m_error;
};

#endif
