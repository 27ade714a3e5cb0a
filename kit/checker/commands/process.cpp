// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#include "commands/process.h"

#include <array>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <fstream>
#include <glib.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

static constexpr const char *configuration
    = R"(<!DOCTYPE busconfig PUBLIC "-//freedesktop//DTD D-Bus Bus Configuration 1.0//EN"
"http://www.freedesktop.org/standards/dbus/1.0/busconfig.dtd">
<busconfig>
  <type>session</type>
  <listen>unix:dir=%s</listen>
  <auth>EXTERNAL</auth>
  <policy context="default">
    <allow send_destination="*" eavesdrop="true"/>
    <allow eavesdrop="true"/>
    <allow own="*"/>
  </policy>
</busconfig>
)";

Process::Process(const std::vector<std::string> &command) { start(command, STDERR_FILENO); }

Process::Process(const std::vector<std::string> &command, int output) { start(command, output); }

void Process::start(const std::vector<std::string> &command, int output)
{
    std::vector<char *> words;
    words.reserve(command.size() + 1);
    for (const std::string &word : command)
        words.push_back(const_cast<char *>(word.c_str())); // NOLINT(cppcoreguidelines-pro-type-const-cast): exec's type
    words.push_back(nullptr);
    std::array<int, 2> input = {-1, -1};
    if (pipe2(input.data(), O_CLOEXEC) != 0)
        return;
    m_pid = fork();
    if (m_pid == 0) {
        setpgid(0, 0);
        prctl(PR_SET_PDEATHSIG, SIGTERM);
        dup2(input[0], STDIN_FILENO);
        dup2(output, STDOUT_FILENO);
        execvp(words[0], words.data());
        std::perror(words[0]);
        _exit(127);
    }
    close(input[0]);
    m_input = input[1];
    // Whichever of the two comes first: signals go to the group.
    setpgid(m_pid, m_pid);
}

Process::~Process()
{
    if (isRunning())
        signal(SIGTERM);
    signal(SIGCONT);
    if (!waitForEnd(2000)) {
        signal(SIGKILL);
        waitForEnd(2000);
    }
    if (m_input >= 0)
        close(m_input);
}

bool Process::isRunning()
{
    if (!m_hasEnded && m_pid > 0)
        m_hasEnded = waitpid(m_pid, &m_status, WNOHANG) == m_pid;
    return m_pid > 0 && !m_hasEnded;
}

void Process::signal(int number) const
{
    if (m_pid > 0 && !m_hasEnded)
        kill(-m_pid, number);
}

bool Process::waitForEnd(int patience)
{
    constexpr int step = 20;
    for (int waited = 0; isRunning(); waited += step) {
        if (waited >= patience)
            return false;
        g_usleep(step * 1000UL);
    }
    return true;
}

bool Process::hasCrashed() const
{
    // GLib ends a program with SIGTERM when its bus goes.
    return m_hasEnded && WIFSIGNALED(m_status) && WTERMSIG(m_status) != SIGTERM;
}

namespace {

class Talking : public Process
{
public:
    Talking(const std::vector<std::string> &command, int output) : Process(command, output) { }
};

// The first line that the other end writes.
std::string lineOf(int pipe)
{
    std::string line;
    char letter = 0;
    while (read(pipe, &letter, 1) == 1 && letter != '\n')
        line += letter;
    return line;
}

} // namespace

std::unique_ptr<PrivateBus> PrivateBus::start(std::string *error)
{
    std::unique_ptr<PrivateBus> bus(new PrivateBus);
    char *folder = g_dir_make_tmp("ringlet-check-XXXXXX", nullptr);
    std::array<int, 2> output = {-1, -1};
    if (!folder || pipe2(output.data(), O_CLOEXEC) != 0) {
        *error = "no folder for a bus can be made";
        return nullptr;
    }
    bus->m_folder = folder;
    g_free(folder);
    char *text = g_strdup_printf(configuration, bus->m_folder.c_str());
    std::ofstream(bus->m_folder + "/bus.conf") << text;
    g_free(text);
    bus->m_process = std::make_unique<Talking>(
        std::vector<std::string>{"dbus-daemon", "--config-file=" + bus->m_folder + "/bus.conf", "--nofork",
            "--nopidfile", "--print-address=1"},
        output[1]);
    close(output[1]);
    const std::string address = lineOf(output[0]);
    close(output[0]);
    if (address.empty()) {
        *error = "dbus-daemon could not be started";
        return nullptr;
    }
    setenv("DBUS_SESSION_BUS_ADDRESS", address.c_str(), 1);
    return bus;
}

PrivateBus::~PrivateBus()
{
    m_process.reset();
    if (m_folder.empty())
        return;
    std::remove((m_folder + "/bus.conf").c_str());
    // The daemon takes its socket along; if it was killed, it is still there.
    if (GDir *folder = g_dir_open(m_folder.c_str(), 0, nullptr)) {
        while (const char *name = g_dir_read_name(folder))
            std::remove((m_folder + '/' + name).c_str());
        g_dir_close(folder);
    }
    rmdir(m_folder.c_str());
}
