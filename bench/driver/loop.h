// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#ifndef BENCH_LOOP_H
#define BENCH_LOOP_H

#include <functional>
#include <map>
#include <string>

/** Waits for several descriptors at once. */
class Loop
{
public:
    void watch(int descriptor, std::function<void()> ready) { m_watched[descriptor] = std::move(ready); }
    void forget(int descriptor) { m_watched.erase(descriptor); }

    /** Serves the descriptors until the condition holds; throws std::runtime_error when it takes five minutes. */
    void waitUntil(const std::function<bool()> &condition, const std::string &what);

    /** Serves them for so long. */
    void runFor(int milliseconds);

private:
    void serveAll();
    void poll(int milliseconds);

    std::map<int, std::function<void()>> m_watched;
};

#endif
