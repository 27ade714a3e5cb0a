// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#ifndef VOICECALLD_CALLPUBLISHER_H
#define VOICECALLD_CALLPUBLISHER_H

#include <QtCore/QObject>

class BusTree;
class Call;
class VoiceCallManager;

/** Gives every call of the call list an object on the bus. */
class CallPublisher : public QObject
{
    Q_OBJECT

public:
    /** Publishes the calls that are there, and those that come. Both must live longer. */
    CallPublisher(VoiceCallManager *manager, BusTree *tree);

    /** Where the call of this id stands: what cannot be part of a path is escaped as _xx, in hex. */
    static QString pathOf(const QString &handlerId);

private:
    void publish(Call *call);

    BusTree *m_tree;
};

#endif
