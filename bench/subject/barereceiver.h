// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#ifndef BENCH_BARERECEIVER_H
#define BENCH_BARERECEIVER_H

#include "bareregistry.h"
#include "subject.h"

/** What becomes of the broadcasts that the plug-in makes when a call comes or goes. */
enum class Broadcasts {
    None,
    Sent, // as messages
    Relayed, // as signals of the registry, by its adaptors
};

/** The floor: what Qt's bus layer needs for the same proxies and the same commands, without the plug-in. */
class BareReceiver : public Subject
{
    Q_OBJECT

public:
    explicit BareReceiver(Broadcasts broadcasts);

    BareRegistry *registry() { return &m_registry; }

protected:
    void command(Command command, uint32_t call) override;
    void changeRoute() override;
    void changeDevices() override;
    void trace(uint32_t) override { }

private:
    void addManager(BareManager *manager);
    void addCall(BareCall *call);
    void removeCall(BareCall *call);

    Broadcasts m_broadcasts;
    BareRegistry m_registry;
    QVector<BareCall *> m_calls;
};

#endif
