// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#include "program.h"

#include <QtCore/QDir>
#include <QtCore/QFile>
#include <QtCore/QTemporaryDir>
#include <QtCore/QVector>
#include <applicationruntime.h>
#include <climits>
#include <csignal>
#include <gmock/gmock.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

struct Row
{
    const char *unit;
    const char *id;
};

const char inUserSession[] = "0::/user.slice/user-1000.slice/user@1000.service/app.slice/";

std::string idFromCgroups(const std::string &cgroups)
{
    return ApplicationRuntime::appIdFromCgroups(QString::fromStdString(cgroups)).toStdString();
}

/** Expects each id from a process in the unit's group in a user's session, on the unified hierarchy. */
void expectIds(const QVector<Row> &rows)
{
    for (const Row &row : rows)
        EXPECT_EQ(idFromCgroups(std::string(inUserSession) + row.unit + "\n"), row.id) << row.unit;
}

QString readFile(const QString &name)
{
    QFile file(name);
    EXPECT_TRUE(file.open(QIODevice::ReadOnly)) << name.toStdString();
    return QString::fromUtf8(file.readAll());
}

void writeCgroups(const QTemporaryDir &procfs, int pid, const QByteArray &text)
{
    ASSERT_TRUE(QDir(procfs.path()).mkdir(QString::number(pid)));
    QFile file(procfs.filePath(QStringLiteral("%1/cgroup").arg(pid)));
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    ASSERT_EQ(file.write(text), text.size());
}

} // namespace

// systemd, "Desktop Environments", section "XDG standardization for applications":
// app[-<launcher>]-<ApplicationID>-<RANDOM>.scope
TEST(ApplicationRuntime, ScopeNamesTheApplicationBeforeItsRandomPart)
{
    expectIds({
        {"app-gnome-org.gnome.Calls-1234.scope", "org.gnome.Calls"},
        {"app-KDE-org.kde.okular-12345.scope", "org.kde.okular"},
        {"app-org.kde.konsole-1234.scope", "org.kde.konsole"},
        {"app-org.kde.konsole-4f3b2a1c0d9e8f7a6b5c4d3e2f1a0b9c.scope", "org.kde.konsole"},
        {"app-org.gnome.Evince-12345.scope", "org.gnome.Evince"},
        {"app-gnome-firefox_firefox-1234.scope", "firefox_firefox"},
    });
}

// The same section: app[-<launcher>]-<ApplicationID>[@<RANDOM>].service
TEST(ApplicationRuntime, ServiceNamesTheApplicationBeforeItsInstance)
{
    expectIds({
        {"app-org.kde.amarok.service", "org.kde.amarok"},
        {"app-gnome-org.gnome.Evince@12345.service", "org.gnome.Evince"},
        {"app-KDE-org.kde.okular@12345.service", "org.kde.okular"},
        {"app-org.foo.Bar@0.service", "org.foo.Bar"},
        {"app-launcher-org.foo.Bar.service", "org.foo.Bar"},
        // An instance is escaped as a whole, and its slashes have become dashes.
        {"app-launcher-org.foo.Bar@home-me@x.service", "org.foo.Bar"},
    });
}

// systemd-xdg-autostart-generator(8): the generator makes app-<name>@autostart.service
TEST(ApplicationRuntime, AutostartedServiceNamesTheApplication)
{
    expectIds({
        {"app-org.foo@autostart.service", "org.foo"},
        {R"(app-gnome\x2dkeyring\x2dpkcs11@autostart.service)", "gnome-keyring-pkcs11"},
    });
}

// Flatpak, release notes and "flatpak ps": app-flatpak-<ID>-<instance>.scope, a form of systemd's with the
// launcher "flatpak"; systemd's page gives the service.
TEST(ApplicationRuntime, FlatpakNamesTheApplication)
{
    expectIds({
        {"app-flatpak-org.foo.Bar-12345.scope", "org.foo.Bar"},
        {"app-flatpak-org.telegram.desktop@12345.service", "org.telegram.desktop"},
        {R"(app-flatpak-org.foo.Bar\x2dDevel-12345.scope)", "org.foo.Bar-Devel"},
    });
}

// systemd.unit(5), "String escaping for inclusion in unit names"
TEST(ApplicationRuntime, EscapesInTheIdAreUndone)
{
    expectIds({
        {R"(app-gnome-google\x2dchrome-1234.scope)", "google-chrome"},
        {R"(app-google\x2Dchrome@1.service)", "google-chrome"},
        {R"(app-my\x2dlauncher-org.foo.Bar-1.scope)", "org.foo.Bar"},
        {R"(app-org.foo.Bar-a\x2db.scope)", "org.foo.Bar"},
        {R"(app-\x2efoo-1.scope)", ".foo"},
        {R"(app-a\x40b-1.scope)", "a@b"},
        {R"(app-a\x5cx2db-1.scope)", R"(a\x2db)"},
        {R"(app-t\xc3\xa9l\xc3\xa9phone-1.scope)", "t\xc3\xa9l\xc3\xa9phone"},
        {"app-50%-1.scope", "50%"},
    });
}

TEST(ApplicationRuntime, MalformedEscapeNamesNoApplication)
{
    expectIds({
        {R"(app-foo\-1.scope)", ""},
        {R"(app-foo\x-1.scope)", ""},
        {R"(app-foo\x2-1.scope)", ""},
        {R"(app-foo\x+2bar-1.scope)", ""},
        {R"(app-foo\xgg-1.scope)", ""},
        {R"(app-foo\u002d-1.scope)", ""},
        {R"(app-launch\er-foo-1.scope)", ""},
        {R"(app-foo\x2d\@1.service)", ""},
    });
}

// An id is shown in lists and written to logs.
TEST(ApplicationRuntime, IdThatIsNoReadableTextIsNotGiven)
{
    expectIds({
        {R"(app-foo\x00bar-1.scope)", ""},
        {R"(app-foo\x0abar-1.scope)", ""},
        {R"(app-foo\x1b[2J-1.scope)", ""},
        {R"(app-foo\x7fbar-1.scope)", ""},
        {R"(app-foo\xffbar-1.scope)", ""},
        {R"(app-foo\xc3-1.scope)", ""},
        {"app-foo\xff-1.scope", ""},
    });
}

// snapd, "Services and daemons": snap.<snap>.<app>.service; "Parallel installs": <snap>_<key> is the name of
// an instance
TEST(ApplicationRuntime, SnapServiceNamesSnapAndApplication)
{
    expectIds({
        {"snap.lxd.daemon.service", "lxd_daemon"},
        {"snap.canonical-livepatch.canonical-livepatchd.service", "canonical-livepatch_canonical-livepatchd"},
        {"snap.foo_work.phone.service", "foo_work_phone"},
        {"snap.foo.hook.service", "foo_hook"},
    });
}

// snapd, "Process tracking" (its use of cgroups): snap.<snap>.<app>-<uuid>.scope, and before that
// snap.<snap>.<app>.<uuid>.scope
TEST(ApplicationRuntime, SnapScopeNamesSnapAndApplication)
{
    expectIds({
        {"snap.firefox.firefox-f81d4fae-7dec-11d0-a765-00a0c91e6bf6.scope", "firefox_firefox"},
        {"snap.firefox.firefox.f81d4fae-7dec-11d0-a765-00a0c91e6bf6.scope", "firefox_firefox"},
        {"snap.some-phone_2.dial-pad-f81d4fae-7dec-11d0-a765-00a0c91e6bf6.scope", "some-phone_2_dial-pad"},
        {"snap.foo.hook-f81d4fae-7dec-11d0-a765-00a0c91e6bf6.scope", "foo_hook"},
    });
}

// snapd, "Supported snap hooks": a hook's tag is snap.<snap>.hook.<hook>
TEST(ApplicationRuntime, SnapHookIsNoApplication)
{
    expectIds({
        {"snap.foo.hook.configure-f81d4fae-7dec-11d0-a765-00a0c91e6bf6.scope", ""},
        {"snap.foo.hook.configure.f81d4fae-7dec-11d0-a765-00a0c91e6bf6.scope", ""},
        {R"(snap.foo\x2bcomp.hook.install-f81d4fae-7dec-11d0-a765-00a0c91e6bf6.scope)", ""},
        {"snap.foo.hook.configure.service", ""},
    });
}

TEST(ApplicationRuntime, OtherUnitsNameNoApplication)
{
    expectIds({
        {"", ""},
        {"dbus-:1.2-org.foo@0.service", ""},
        {"vte-spawn-f81d4fae-7dec-11d0-a765-00a0c91e6bf6.scope", ""},
        {"dbus.service", ""},
        {"session-2.scope", ""},
        {"app.slice", ""},
        {"app-org.gnome.Terminal.slice", ""},
        {"app-.service", ""},
        {"app-@1.service", ""},
        {"app-foo@.service", ""},
        {"app-foo.scope", ""},
        {"app--foo-1.scope", ""},
        {"app-foo--1.scope", ""},
        {"app-foo-.scope", ""},
        {"app-launcher-foo-bar-1.scope", ""},
        {"app-launcher-foo-bar.service", ""},
        {"app-foo-1.socket", ""},
        {"app-foo-1.scope.d", ""},
        {"my-app-foo-1.scope", ""},
        {"APP-foo-1.scope", ""},
        {"snap.foo.service", ""},
        {"snap.foo.bar.scope", ""},
        {"snap.foo.bar-1234.scope", ""},
        {"snap.foo.bar.baz.service", ""},
        {"snap..bar.service", ""},
        {"snap.foo.bar.timer", ""},
        {"snap-foo-123.mount", ""},
    });
}

// systemd, "Control Group APIs and Delegation": a unit may make groups below its own.
TEST(ApplicationRuntime, GroupInsideAUnitBelongsToItsApplication)
{
    expectIds({
        {"app-gnome-org.gnome.Calls-1234.scope/init", "org.gnome.Calls"},
        {"app-org.foo.Bar@1.service/payload/worker-1", "org.foo.Bar"},
        {R"(app-org.foo.Bar@1.service/app-broken\-1.scope)", "org.foo.Bar"},
    });
}

TEST(ApplicationRuntime, InnermostApplicationWins)
{
    expectIds({
        {"app-org.kde.konsole-1.scope/app-org.foo.Bar-2.scope", "org.foo.Bar"},
        {"app-org.kde.konsole-1.scope/snap.foo.bar.service/x", "foo_bar"},
    });
}

// cgroups(7), "/proc/PID/cgroup": hierarchy-ID:controller-list:cgroup-path, hierarchy 0 with no controllers
// for version 2
TEST(ApplicationRuntime, LegacyHierarchyIsReadFromSystemdsOwnLine)
{
    EXPECT_EQ(idFromCgroups("12:pids:/user.slice/user-1000.slice\n"
                            "1:name=systemd:/user.slice/user-1000.slice/user@1000.service/app-org.foo.Bar-1.scope\n"),
        "org.foo.Bar");
}

TEST(ApplicationRuntime, HybridHierarchyIsReadFromWhicheverLineNamesTheApplication)
{
    EXPECT_EQ(idFromCgroups("1:name=systemd:/user.slice/app-org.foo.Bar-1.scope\n0::/\n"), "org.foo.Bar");
    EXPECT_EQ(idFromCgroups("1:name=systemd:/user.slice/app-org.foo.Bar-1.scope\n"
                            "0::/user.slice/user-1000.slice\n"),
        "org.foo.Bar");
    EXPECT_EQ(idFromCgroups("1:name=systemd:/\n0::/user.slice/app-org.foo.Bar-1.scope\n"), "org.foo.Bar");
    EXPECT_EQ(idFromCgroups("1:name=systemd:/app-old-1.scope\n0::/app-new-1.scope\n"), "new");
}

TEST(ApplicationRuntime, ControllersLinesNameNoApplication)
{
    EXPECT_EQ(idFromCgroups("8:pids:/app-foo-1.scope\n4:cpu,cpuacct:/app-foo-1.scope\n"), "");
    EXPECT_EQ(idFromCgroups("3:name=elogind:/app-foo-1.scope\n"), "");
    EXPECT_EQ(idFromCgroups("3:xname=systemd:/app-foo-1.scope\n"), "");
}

TEST(ApplicationRuntime, PathMayContainColons)
{
    EXPECT_EQ(idFromCgroups("0::/dbus-:1.2-org.foo@0.service/app-foo-1.scope\n"), "foo");
    EXPECT_EQ(idFromCgroups("7:pids:/x:name=systemd:/app-foo-1.scope\n"), "");
}

// The kernel's "Control Group v2": the group of a zombie that has been removed is marked.
TEST(ApplicationRuntime, RemovedGroupNamesNoApplication)
{
    EXPECT_EQ(idFromCgroups("0::/user.slice/app-foo-1.scope (deleted)\n"), "");
}

TEST(ApplicationRuntime, TextThatIsNoListOfGroupsNamesNoApplication)
{
    EXPECT_EQ(idFromCgroups(""), "");
    EXPECT_EQ(idFromCgroups("\n\n"), "");
    EXPECT_EQ(idFromCgroups("app-foo-1.scope"), "");
    EXPECT_EQ(idFromCgroups("::/app-foo-1.scope\n"), "");
    EXPECT_EQ(idFromCgroups("0:"), "");
    EXPECT_EQ(idFromCgroups("0::"), "");
}

TEST(ApplicationRuntime, LastLineNeedsNoEnd) { EXPECT_EQ(idFromCgroups("0::/app-foo-1.scope"), "foo"); }

TEST(ApplicationRuntime, VeryLongNamesAreRead)
{
    const std::string part(4000, 'x');
    EXPECT_EQ(idFromCgroups("0::/app-" + part + "-1.scope\n"), part);
    EXPECT_EQ(idFromCgroups("0::/app-" + part + "-" + part + "-" + part + "-" + part + ".scope\n"), "");
}

TEST(ApplicationRuntime, EachProcessBelongsToTheApplicationOfItsOwnGroup)
{
    const QTemporaryDir procfs;
    writeCgroups(procfs, 77, "0::/user.slice/app-gnome-org.gnome.Calls-1234.scope\n");
    writeCgroups(procfs, 78, "9:pids:/\n1:name=systemd:/user.slice/snap.foo.bar.service\n");
    const ApplicationRuntime runtime(procfs.path());

    EXPECT_EQ(runtime.getAppIdByPid(77).toStdString(), "org.gnome.Calls");
    EXPECT_EQ(runtime.getAppIdByPid(78).toStdString(), "foo_bar");
    EXPECT_EQ(runtime.getAppIdByPid(7).toStdString(), "");
}

TEST(ApplicationRuntime, ProcessIsFoundThroughItsOwnControlGroups)
{
    EXPECT_EQ(ApplicationRuntime::instance().getAppIdByPid(getpid()),
        ApplicationRuntime::appIdFromCgroups(readFile(QStringLiteral("/proc/self/cgroup"))));
}

TEST(ApplicationRuntime, StoppedProcessIsNotWaitedFor)
{
    Program program;
    ASSERT_TRUE(program.start(QStringLiteral("cat"), {}));
    program.signal(SIGSTOP);
    siginfo_t info;
    ASSERT_EQ(waitid(P_PID, id_t(program.processId()), &info, WSTOPPED | WNOWAIT), 0);
    EXPECT_EQ(ApplicationRuntime::instance().getAppIdByPid(int(program.processId())),
        ApplicationRuntime::instance().getAppIdByPid(getpid()));
}

TEST(ApplicationRuntime, ProcessThatIsGoneHasNoApplication)
{
    const pid_t child = fork();
    if (child == 0)
        _exit(0);
    ASSERT_EQ(waitpid(child, nullptr, 0), child);
    EXPECT_EQ(ApplicationRuntime::instance().getAppIdByPid(child).toStdString(), "");
}

TEST(ApplicationRuntime, NumberThatIsNoProcessHasNoApplication)
{
    for (const int pid : {0, -1, INT_MIN, INT_MAX})
        EXPECT_EQ(ApplicationRuntime::instance().getAppIdByPid(pid).toStdString(), "") << pid;
}

TEST(ApplicationRuntime, InstanceIsTheSameEveryTime)
{
    EXPECT_EQ(&ApplicationRuntime::instance(), &ApplicationRuntime::instance());
}
