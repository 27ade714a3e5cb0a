/* SPDX-FileCopyrightText: 2026 The Ringlet Authors
 * SPDX-License-Identifier: BSD-3-Clause
 *
 * One incoming call: ringlet-example-sd-bus [ADDRESS [NAME [BUS-NAME-OF-THE-HOST]]]. Ctrl-C is the far end
 * hanging up.
 */

#include <signal.h>
#include <stdbool.h>
#include <stddef.h>
#include <stdint.h>
#include <stdio.h>
#include <string.h>
#include <systemd/sd-bus.h>
#include <systemd/sd-event.h>

#define MANAGER_PATH "/ringlet/example"
#define CALL_PATH MANAGER_PATH "/call1"
#define SERVICE_PATH "/zelkovar/call/service"
#define CALL "zelkovar.Call.Call1"

enum { NOT_YET = 0, ENDED = 1, INCOMING = 3, ACTIVE = 5, HELD = 7 };

/* sd-bus takes the values of the properties right out of here. */
static struct
{
    int yes;
    uint32_t status;
    const char *name, *address;
} call = {1, NOT_YET, "Caller", "sip:caller@example.org"};

static const char *host_name = "org.tarnwickle.voicecall";
static char host[256]; /* the connection that has the host's name; empty if none has */
static sd_bus *bus;
static sd_bus_slot *exported[3]; /* the interfaces of the call */

static void emit_status(void) { sd_bus_emit_signal(bus, CALL_PATH, CALL, "StatusChanged", "u", call.status); }

static void change_status(uint32_t from, uint32_t to)
{
    if (call.status != from)
        return;
    call.status = to;
    emit_status();
}

/* The final status goes first: behind the removal nobody listens. */
static void end_call(void)
{
    if (call.status <= ENDED)
        return;
    call.status = ENDED;
    emit_status();
    sd_bus_emit_object_removed(bus, CALL_PATH); /* sd-bus lists what is there still */
    for (int i = 0; i < 3; ++i)
        exported[i] = sd_bus_slot_unref(exported[i]);
}

static void print_devices(sd_bus_message *message)
{
    const char *id;
    sd_bus_message_enter_container(message, 'a', "(sibbsa{sv})");
    while (sd_bus_message_enter_container(message, 'r', "sibbsa{sv}") > 0) {
        sd_bus_message_read(message, "s", &id);
        sd_bus_message_skip(message, "ibbsa{sv}");
        sd_bus_message_exit_container(message);
        printf(" %s", id);
    }
    sd_bus_message_exit_container(message);
}

static void obey(const char *method, sd_bus_message *message)
{
    const char *text, *input, *output;
    int flag;
    printf("%s", method);
    if (strcmp(method, "Accept") == 0) {
        change_status(INCOMING, ACTIVE);
    } else if (strcmp(method, "Reject") == 0) {
        end_call();
    } else if (strcmp(method, "SetHold") == 0 && sd_bus_message_read(message, "b", &flag) > 0) {
        printf(flag ? " true" : " false");
        change_status(flag ? ACTIVE : HELD, flag ? HELD : ACTIVE);
    } else if (strcmp(method, "SendDTMF") == 0 && sd_bus_message_read(message, "s", &text) > 0) {
        printf(" %s", text);
    } else { /* both of AudioControl1 */
        if (strcmp(method, "UpdateAudioRouteState") == 0)
            print_devices(message);
        if (sd_bus_message_read(message, "bss", &flag, &input, &output) > 0)
            printf(" %s %s %s", flag ? "muted" : "on", input, output);
    }
    putchar('\n');
}

/* Anybody on the bus can send a command; only the host is obeyed. */
static int on_command(sd_bus_message *message, void *data, sd_bus_error *error)
{
    if (strcmp(sd_bus_message_get_sender(message), host) != 0)
        return sd_bus_error_set(error, SD_BUS_ERROR_ACCESS_DENIED, "only the host commands calls");
    obey(sd_bus_message_get_member(message), message);
    return sd_bus_reply_method_return(message, NULL);
}

#define COMMAND(name, arguments) SD_BUS_METHOD(name, arguments, "", on_command, SD_BUS_VTABLE_UNPRIVILEGED)
#define PROPERTY(name, type, member) SD_BUS_PROPERTY(name, type, NULL, offsetof(__typeof__(call), member), 0)

static const sd_bus_vtable call_members[] = {
    SD_BUS_VTABLE_START(0),
    COMMAND("Accept", ""),
    COMMAND("Reject", "u"),
    COMMAND("SetHold", "b"),
    SD_BUS_SIGNAL("StatusChanged", "u", 0),
    PROPERTY("Incoming", "b", yes),
    PROPERTY("Status", "u", status),
    PROPERTY("Holdable", "b", yes),
    PROPERTY("RemoteName", "s", name),
    PROPERTY("Uri", "s", address),
    SD_BUS_VTABLE_END,
};
static const sd_bus_vtable dtmf_members[] = {SD_BUS_VTABLE_START(0), COMMAND("SendDTMF", "s"), SD_BUS_VTABLE_END};
static const sd_bus_vtable audio_members[] = {SD_BUS_VTABLE_START(0),
    COMMAND("UpdateAudioRouteState", "a(sibbsa{sv})bss"), COMMAND("UpdateAudioRoute", "bss"), SD_BUS_VTABLE_END};

/* Only when it is registered may the call be announced. Before, it would be reported twice: by its announcement,
 * and in the answer to GetManagedObjects. A call that is up already is told by that answer. */
static int on_registered(sd_bus_message *reply, void *data, sd_bus_error *error)
{
    if (sd_bus_message_is_method_error(reply, NULL) || call.status != NOT_YET)
        return 0;
    call.status = INCOMING;
    sd_bus_add_object_vtable(bus, &exported[0], CALL_PATH, CALL, call_members, &call);
    sd_bus_add_object_vtable(bus, &exported[1], CALL_PATH, "zelkovar.Call.DTMF1", dtmf_members, NULL);
    sd_bus_add_object_vtable(bus, &exported[2], CALL_PATH, "zelkovar.Call.AudioControl1", audio_members, NULL);
    return sd_bus_emit_object_added(bus, CALL_PATH);
}

static void set_host(const char *owner)
{
    snprintf(host, sizeof host, "%s", owner);
    if (*host)
        sd_bus_call_method_async(bus, NULL, host, SERVICE_PATH, "zelkovar.Call.Service1", "RegisterCallManager",
            on_registered, NULL, "o", MANAGER_PATH);
}

static int on_owner_changed(sd_bus_message *message, void *data, sd_bus_error *error)
{
    const char *owner;
    if (sd_bus_message_read(message, "sss", NULL, NULL, &owner) >= 0)
        set_host(owner);
    return 0;
}

/* Leads into an a{s*} and to the value of a key, if there is one. */
static bool find(sd_bus_message *message, const char *entry, const char *key)
{
    const char *found;
    sd_bus_message_enter_container(message, 'a', NULL);
    while (sd_bus_message_enter_container(message, 'e', entry) > 0) {
        sd_bus_message_read(message, "s", &found);
        if (strcmp(found, key) == 0)
            return true;
        sd_bus_message_skip(message, entry + 1);
        sd_bus_message_exit_container(message);
    }
    return false;
}

/* The host shows the call, and only since then listens to its status: tell it again if it has changed. */
static int on_shown(sd_bus_message *message, void *data, sd_bus_error *error)
{
    const char *path, *type;
    uint32_t shown;
    if (strcmp(sd_bus_message_get_sender(message), host) != 0 || !sd_bus_message_has_signature(message, "soa{sa{sv}}"))
        return 0;
    sd_bus_message_read(message, "so", NULL, &path);
    if (call.status > ENDED && strcmp(path, CALL_PATH) == 0 && find(message, "sa{sv}", CALL)
        && find(message, "sv", "Status") && sd_bus_message_peek_type(message, NULL, &type) > 0 && strcmp(type, "u") == 0
        && sd_bus_message_read(message, "v", type, &shown) > 0 && shown != call.status)
        emit_status();
    return 0;
}

static void follow_host(void)
{
    sd_bus_message *reply = NULL;
    const char *owner, *self;
    char rule[512];
    snprintf(rule, sizeof rule, "sender='org.freedesktop.DBus',member='NameOwnerChanged',arg0='%s'", host_name);
    sd_bus_add_match(bus, NULL, rule, on_owner_changed, NULL);
    sd_bus_get_unique_name(bus, &self);
    snprintf(rule, sizeof rule, "path='" SERVICE_PATH "',member='InterfacesAdded',arg0='%s'", self);
    sd_bus_add_match(bus, NULL, rule, on_shown, NULL);
    sd_bus_call_method(bus, "org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus", "GetNameOwner",
        NULL, &reply, "s", host_name);
    if (reply && sd_bus_message_read(reply, "s", &owner) >= 0)
        set_host(owner);
    sd_bus_message_unref(reply);
}

int main(int argc, char *argv[])
{
    sd_event *loop = NULL;
    sigset_t interrupt;
    int result = sd_bus_open_user(&bus);
    call.address = argc > 1 ? argv[1] : call.address;
    call.name = argc > 2 ? argv[2] : call.name;
    host_name = argc > 3 ? argv[3] : host_name;
    setvbuf(stdout, NULL, _IOLBF, 0);
    if (result < 0) {
        fprintf(stderr, "the session bus: %s\n", strerror(-result));
        return 1;
    }
    sigemptyset(&interrupt);
    sigaddset(&interrupt, SIGINT);
    sigprocmask(SIG_BLOCK, &interrupt, NULL);
    sd_event_default(&loop);
    sd_event_add_signal(loop, NULL, SIGINT, NULL, NULL); /* ends the loop */
    sd_bus_attach_event(bus, loop, SD_EVENT_PRIORITY_NORMAL);
    sd_bus_set_exit_on_disconnect(bus, true);
    sd_bus_set_close_on_exit(bus, false); /* there is something to say behind the loop */
    sd_bus_add_object_manager(bus, NULL, MANAGER_PATH);
    follow_host();
    result = sd_event_loop(loop);
    end_call();
    sd_bus_flush_close_unref(bus);
    sd_event_unref(loop);
    return result;
}
