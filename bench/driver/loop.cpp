// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#include "loop.h"

#include "control.h"

#include <poll.h>
#include <stdexcept>
#include <vector>

static constexpr int64_t limit = int64_t(300) * 1000000000;

void Loop::serveAll()
{
    const auto watched = m_watched;
    for (const auto &[descriptor, ready] : watched)
        ready();
}

void Loop::poll(int milliseconds)
{
    std::vector<pollfd> descriptors;
    for (const auto &[descriptor, ready] : m_watched)
        descriptors.push_back({descriptor, POLLIN, 0});
    ::poll(descriptors.data(), descriptors.size(), milliseconds);
    for (const pollfd &descriptor : descriptors) {
        const auto found = m_watched.find(descriptor.fd);
        if (descriptor.revents && found != m_watched.end())
            found->second();
    }
}

void Loop::waitUntil(const std::function<bool()> &condition, const std::string &what)
{
    // What was read along with something else lies in a queue already, and no descriptor tells of it.
    serveAll();
    const int64_t begin = now();
    while (!condition()) {
        if (now() - begin > limit)
            throw std::runtime_error("waited in vain for " + what);
        poll(1000);
    }
}

void Loop::runFor(int milliseconds)
{
    serveAll();
    const int64_t end = now() + int64_t(milliseconds) * 1000000;
    for (int64_t left = end - now(); left > 0; left = end - now())
        poll(int(left / 1000000) + 1);
}
