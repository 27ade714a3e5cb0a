// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#ifndef VOICECALLD_CALL_H
#define VOICECALLD_CALL_H

#include "bounds.h"
#include "providerinfo.h"

#include <abstractvoicecallhandler.h>

#include <QtCore/QPointer>
#include <QtCore/QVariantMap>

/**
 * One entry of the call list: follows a handler from the moment the handler is announced until release().
 *
 * Its properties are those of org.tarnwickle.voicecall.Call1, read anew whenever the handler signals
 * anything. Texts are cut as the bounds say.
 */
class Call : public QObject
{
    Q_OBJECT

public:
    Call(AbstractVoiceCallHandler *handler, const ProviderInfo &provider, const Bounds &bounds, QObject *parent);

    QString id() const { return m_id; }
    const QString &providerId() const { return m_provider.id; }
    const QVariantMap &properties() const { return m_properties; }

    /** Null once the handler is gone or was let go. */
    AbstractVoiceCallHandler *handler() const { return m_handler; }

    /** Stops listening to the handler, which may live on for a while. */
    void release();

Q_SIGNALS:
    /** Only what really changed. */
    void changed(const QVariantMap &properties);

    /** The handler was destroyed without notice. */
    void handlerDestroyed();

private:
    QVariantMap read() const;
    void refresh();

    QPointer<AbstractVoiceCallHandler> m_handler;
    ProviderInfo m_provider;
    Bounds m_bounds;
    QString m_id;
    QVariantMap m_properties;
};

#endif
