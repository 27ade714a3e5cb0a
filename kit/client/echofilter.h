// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#ifndef RINGLETCLIENT_ECHOFILTER_H
#define RINGLETCLIENT_ECHOFILTER_H

#include <QtCore/QDeadlineTimer>
#include <QtCore/QVector>
#include <chrono>

namespace Ringlet {

/**
 * Tells the reports that an application makes because of what it was told from those that it makes of its
 * own accord. To compare a report with the last thing told is not enough: when the host changes its mind
 * quickly, the reports lag behind, and one of them always differs.
 */
template <typename Value>
class EchoFilter
{
public:
    /** How long a report may lag behind what caused it. */
    explicit EchoFilter(std::chrono::milliseconds window = std::chrono::seconds(2)) : m_window(window) { }

    /** The application learns `value` now. */
    void told(const Value &value)
    {
        dropExpired();
        m_told.append({value, QDeadlineTimer(m_window)});
    }

    /**
     * Whether a report of `value` is the effect of something told. It then settles that and all that was told
     * before, which the application may have skipped.
     */
    bool isEcho(const Value &value)
    {
        dropExpired();
        for (int i = 0; i < m_told.size(); ++i) {
            if (m_told.at(i).value == value) {
                m_told.remove(0, i + 1);
                return true;
            }
        }
        m_told.clear();
        return false;
    }

private:
    struct Told
    {
        Value value;
        QDeadlineTimer until;
    };

    void dropExpired()
    {
        while (!m_told.isEmpty() && m_told.constFirst().until.hasExpired())
            m_told.removeFirst();
    }

    std::chrono::milliseconds m_window;
    QVector<Told> m_told;
};

} // namespace Ringlet

#endif
