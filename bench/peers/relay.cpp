// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

// Passes on what comes on descriptor 3 to descriptor 4, and the other way round: what a bus daemon does at the
// least. With "end" as its argument it is the other end: reports what comes on descriptor 4, and sends it back.

#include "control.h"

#include <cstring>
#include <poll.h>
#include <unistd.h>

static constexpr int farDescriptor = 4;

static bool pass(int from, int to)
{
    char buffer[4096];
    const ssize_t count = read(from, buffer, sizeof buffer);
    return count > 0 && write(to, buffer, size_t(count)) == count;
}

static int relay()
{
    for (;;) {
        pollfd descriptors[] = {{controlDescriptor, POLLIN, 0}, {farDescriptor, POLLIN, 0}};
        poll(descriptors, 2, -1);
        if (descriptors[0].revents && !pass(controlDescriptor, farDescriptor))
            return 0;
        if (descriptors[1].revents && !pass(farDescriptor, controlDescriptor))
            return 0;
    }
}

static int end()
{
    char buffer[4096];
    for (;;) {
        pollfd descriptor = {farDescriptor, POLLIN, 0};
        poll(&descriptor, 1, -1);
        const ssize_t count = read(farDescriptor, buffer, sizeof buffer);
        const Event event = eventNow(EventKind::Status);
        if (count <= 0 || write(controlDescriptor, &event, sizeof event) != sizeof event
            || write(farDescriptor, buffer, size_t(count)) != count)
            return 0;
    }
}

int main(int argc, char *argv[]) { return argc == 2 && std::strcmp(argv[1], "end") == 0 ? end() : relay(); }
