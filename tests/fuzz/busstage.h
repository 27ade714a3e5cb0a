// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#ifndef TESTS_BUSSTAGE_H
#define TESTS_BUSSTAGE_H

#include "desktophost.h"
#include "peer.h"
#include "stage.h"

#include <map>

/**
 * A real bus with the desktop host on it. Every application has a connection of its own, which the bus ends
 * when it is sent what it does not take; from then on the application is mute until it leaves.
 */
class BusStage : public Stage
{
public:
    /** The host's own steps spare the calls of the application named `spared`. */
    BusStage(std::string address, DesktopHost &host, const QString &spared)
        : m_address(std::move(address)),
          m_host(host),
          m_spared(spared)
    {
    }

    std::string hostName() const override;
    std::string name(int application) override;
    void send(int application, Message message) override;
    Message takeRequest(int application) override;
    void leave(int application) override { m_applications.erase(application); }
    void settle() override;
    void act(const HostStep &step) override;
    void announceOwner(const std::string &, const std::string &, const std::string &) override { }
    void distort(Query, Answer) override { }

    void everybodyLeaves() { m_applications.clear(); }

private:
    Peer &peer(int application);
    void command(unsigned target, const char *method, const QVariantList &arguments);

    const std::string m_address;
    DesktopHost &m_host;
    const QString m_spared;
    std::map<int, Peer> m_applications;
};

#endif
