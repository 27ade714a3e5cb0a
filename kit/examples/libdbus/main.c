/* SPDX-FileCopyrightText: 2026 The Ringlet Authors
 * SPDX-License-Identifier: BSD-3-Clause
 *
 * One incoming call: ringlet-example-libdbus [ADDRESS [NAME [HOST-BUS-NAME]]]. Ctrl-C is the far end hanging up. */

#include <dbus/dbus.h>
#include <signal.h>
#include <stdbool.h>
#include <stdio.h>
#include <string.h>

#define SERVICE_PATH "/zelkovar/call/service"
#define CALL "zelkovar.Call.Call1"
#define DTMF "zelkovar.Call.DTMF1"
#define AUDIO "zelkovar.Call.AudioControl1"
#define DAEMON "org.freedesktop.DBus"
#define OBJECT_MANAGER "org.freedesktop.DBus.ObjectManager"

enum { NOT_YET = 0, ENDED = 1, INCOMING = 3, ACTIVE = 5, HELD = 7 };

static const char *address = "sip:caller@example.org", *name = "Caller", *host_name = "org.tarnwickle.voicecall";
static const char *manager_path = "/ringlet/example", *call_path = "/ringlet/example/call1";
static const char *const interfaces[] = {CALL, DTMF, AUDIO};
static DBusConnection *bus;
static char host[DBUS_MAXIMUM_NAME_LENGTH + 1]; /* the connection that has the host's name; empty if none has */
static volatile sig_atomic_t is_interrupted;
static dbus_uint32_t status = NOT_YET, owner_request, registration; /* the latter two are serials */

static bool send_message(DBusMessage *message)
{
    dbus_connection_send(bus, message, NULL);
    dbus_message_unref(message);
    return true;
}

static void change_status(dbus_uint32_t from, dbus_uint32_t to)
{
    if (status == from) {
        DBusMessage *signal = dbus_message_new_signal(call_path, CALL, "StatusChanged");
        status = to;
        dbus_message_append_args(signal, DBUS_TYPE_UINT32, &status, DBUS_TYPE_INVALID);
        send_message(signal);
    }
}

static void append_property(DBusMessageIter *properties, const char *property, const char *type, const void *value)
{
    DBusMessageIter entry, variant;
    dbus_message_iter_open_container(properties, DBUS_TYPE_DICT_ENTRY, NULL, &entry);
    dbus_message_iter_append_basic(&entry, DBUS_TYPE_STRING, &property);
    dbus_message_iter_open_container(&entry, DBUS_TYPE_VARIANT, type, &variant);
    dbus_message_iter_append_basic(&variant, *type, value);
    dbus_message_iter_close_container(&entry, &variant);
    dbus_message_iter_close_container(properties, &entry);
}

/* oa{sa{sv}}: the call's path, and its interfaces with their properties. Only Call1 has any. */
static void append_call(DBusMessageIter *to)
{
    const dbus_bool_t yes = TRUE;
    DBusMessageIter dictionary, entry, properties;
    dbus_message_iter_append_basic(to, DBUS_TYPE_OBJECT_PATH, &call_path);
    dbus_message_iter_open_container(to, DBUS_TYPE_ARRAY, "{sa{sv}}", &dictionary);
    for (int i = 0; i < 3; ++i) {
        dbus_message_iter_open_container(&dictionary, DBUS_TYPE_DICT_ENTRY, NULL, &entry);
        dbus_message_iter_append_basic(&entry, DBUS_TYPE_STRING, &interfaces[i]);
        dbus_message_iter_open_container(&entry, DBUS_TYPE_ARRAY, "{sv}", &properties);
        if (i == 0) {
            append_property(&properties, "Incoming", DBUS_TYPE_BOOLEAN_AS_STRING, &yes);
            append_property(&properties, "Status", DBUS_TYPE_UINT32_AS_STRING, &status);
            append_property(&properties, "Holdable", DBUS_TYPE_BOOLEAN_AS_STRING, &yes);
            append_property(&properties, "RemoteName", DBUS_TYPE_STRING_AS_STRING, &name);
            append_property(&properties, "Uri", DBUS_TYPE_STRING_AS_STRING, &address);
        }
        dbus_message_iter_close_container(&entry, &properties);
        dbus_message_iter_close_container(&dictionary, &entry);
    }
    dbus_message_iter_close_container(to, &dictionary);
}

static void answer_managed_objects(DBusMessage *request)
{
    DBusMessage *reply = dbus_message_new_method_return(request);
    DBusMessageIter arguments, objects, entry;
    dbus_message_iter_init_append(reply, &arguments);
    dbus_message_iter_open_container(&arguments, DBUS_TYPE_ARRAY, "{oa{sa{sv}}}", &objects);
    if (status > ENDED) {
        dbus_message_iter_open_container(&objects, DBUS_TYPE_DICT_ENTRY, NULL, &entry);
        append_call(&entry);
        dbus_message_iter_close_container(&objects, &entry);
    }
    dbus_message_iter_close_container(&arguments, &objects);
    send_message(reply);
}

static void ring(void)
{
    DBusMessage *signal = dbus_message_new_signal(manager_path, OBJECT_MANAGER, "InterfacesAdded");
    DBusMessageIter arguments;
    status = INCOMING;
    dbus_message_iter_init_append(signal, &arguments);
    append_call(&arguments);
    send_message(signal);
}

/* The final status goes first: behind the removal nobody listens. */
static void end_call(void)
{
    const char *const *names = interfaces;
    DBusMessage *signal = dbus_message_new_signal(manager_path, OBJECT_MANAGER, "InterfacesRemoved");
    change_status(status, ENDED);
    dbus_message_append_args(
        signal, DBUS_TYPE_OBJECT_PATH, &call_path, DBUS_TYPE_ARRAY, DBUS_TYPE_STRING, &names, 3, DBUS_TYPE_INVALID);
    send_message(signal);
}

static void read_next(DBusMessageIter *from, void *value)
{
    dbus_message_iter_get_basic(from, value);
    dbus_message_iter_next(from);
}

static void print_text(DBusMessageIter *arguments)
{
    const char *text;
    read_next(arguments, &text);
    printf(" %s", text);
}

static void accept_call(DBusMessageIter *arguments) { change_status(INCOMING, ACTIVE); }
static void reject_call(DBusMessageIter *arguments) { end_call(); }

static void set_hold(DBusMessageIter *arguments)
{
    dbus_bool_t hold;
    read_next(arguments, &hold);
    printf(hold ? " true" : " false");
    change_status(hold ? ACTIVE : HELD, hold ? HELD : ACTIVE);
}

static void take_audio_route(DBusMessageIter *arguments)
{
    dbus_bool_t muted;
    read_next(arguments, &muted);
    printf(muted ? " muted" : " on");
    print_text(arguments); /* input */
    print_text(arguments); /* output */
}

static void take_audio_state(DBusMessageIter *arguments)
{
    DBusMessageIter devices, device;
    dbus_message_iter_recurse(arguments, &devices);
    for (; dbus_message_iter_get_arg_type(&devices) == DBUS_TYPE_STRUCT; dbus_message_iter_next(&devices)) {
        dbus_message_iter_recurse(&devices, &device);
        print_text(&device); /* its id */
    }
    dbus_message_iter_next(arguments);
    take_audio_route(arguments);
}

static const struct
{
    const char *interface, *method, *signature;
    void (*obey)(DBusMessageIter *arguments);
} commands[6] = {
    {CALL, "Accept", "", accept_call},
    {CALL, "Reject", "u", reject_call},
    {CALL, "SetHold", "b", set_hold},
    {DTMF, "SendDTMF", "s", print_text},
    {AUDIO, "UpdateAudioRoute", "bss", take_audio_route},
    {AUDIO, "UpdateAudioRouteState", "a(sibbsa{sv})bss", take_audio_state},
};

/* Whether there is such a command. Anybody on the bus can send one; only the host is obeyed. */
static bool take_command(DBusMessage *request)
{
    int i = 0;
    DBusMessageIter arguments;
    while (i < 6 && !dbus_message_is_method_call(request, commands[i].interface, commands[i].method))
        ++i;
    if (i == 6 || status <= ENDED || !dbus_message_has_path(request, call_path))
        return false;
    if (!dbus_message_has_sender(request, host))
        return send_message(dbus_message_new_error(request, DBUS_ERROR_ACCESS_DENIED, "only the host commands calls"));
    if (!dbus_message_has_signature(request, commands[i].signature))
        return send_message(dbus_message_new_error(request, DBUS_ERROR_INVALID_ARGS, "arguments of other types"));
    printf("%s", commands[i].method);
    dbus_message_iter_init(request, &arguments);
    commands[i].obey(&arguments);
    putchar('\n');
    return send_message(dbus_message_new_method_return(request));
}

static void set_host(const char *owner)
{
    if (snprintf(host, sizeof host, "%s", owner) > 0) {
        DBusMessage *request
            = dbus_message_new_method_call(host, SERVICE_PATH, "zelkovar.Call.Service1", "RegisterCallManager");
        dbus_message_append_args(request, DBUS_TYPE_OBJECT_PATH, &manager_path, DBUS_TYPE_INVALID);
        dbus_connection_send(bus, request, &registration);
        dbus_message_unref(request);
    }
}

/* Leads to the value of a key in an a{s*}, if there is one. */
static bool find_value(DBusMessageIter *dictionary, const char *key, DBusMessageIter *value)
{
    DBusMessageIter entries;
    const char *found;
    dbus_message_iter_recurse(dictionary, &entries);
    for (; dbus_message_iter_get_arg_type(&entries) == DBUS_TYPE_DICT_ENTRY; dbus_message_iter_next(&entries)) {
        dbus_message_iter_recurse(&entries, value);
        read_next(value, &found);
        if (strcmp(found, key) == 0)
            return true;
    }
    return false;
}

/* The host shows the call, and only since then listens to its status: tell it again if it has changed. */
static void on_shown(DBusMessage *signal)
{
    DBusMessageIter arguments, properties, variant, value;
    const char *application, *path;
    dbus_uint32_t shown = status;
    dbus_message_iter_init(signal, &arguments);
    read_next(&arguments, &application);
    read_next(&arguments, &path);
    if (status <= ENDED || strcmp(application, dbus_bus_get_unique_name(bus)) != 0 || strcmp(path, call_path) != 0
        || !find_value(&arguments, CALL, &properties) || !find_value(&properties, "Status", &variant))
        return;
    dbus_message_iter_recurse(&variant, &value);
    if (dbus_message_iter_get_arg_type(&value) == DBUS_TYPE_UINT32)
        dbus_message_iter_get_basic(&value, &shown);
    if (shown != status)
        change_status(status, status);
}

/* Only when it is registered may the call be announced. Before, it would be reported twice: by its announcement,
 * and in the answer to GetManagedObjects. A call that is up already is told by that answer. */
static DBusHandlerResult on_message(DBusConnection *connection, DBusMessage *message, void *data)
{
    const char *text, *owner;
    bool is_reply = dbus_message_get_type(message) == DBUS_MESSAGE_TYPE_METHOD_RETURN; /* and no error */
    bool is_from_host = dbus_message_has_sender(message, host), is_from_bus = dbus_message_has_sender(message, DAEMON);
    if (is_from_bus && dbus_message_is_signal(message, DAEMON, "NameOwnerChanged")
        && dbus_message_get_args(message, NULL, DBUS_TYPE_STRING, &text, DBUS_TYPE_STRING, &text, DBUS_TYPE_STRING,
            &owner, DBUS_TYPE_INVALID))
        set_host(owner);
    else if (is_from_bus && is_reply && dbus_message_get_reply_serial(message) == owner_request
        && dbus_message_get_args(message, NULL, DBUS_TYPE_STRING, &owner, DBUS_TYPE_INVALID))
        set_host(owner);
    else if (is_from_host && is_reply && dbus_message_get_reply_serial(message) == registration && status == NOT_YET)
        ring();
    else if (is_from_host && dbus_message_is_signal(message, "zelkovar.Call.ServiceManager1", "InterfacesAdded")
        && dbus_message_has_signature(message, "soa{sa{sv}}"))
        on_shown(message);
    else if (dbus_message_is_method_call(message, OBJECT_MANAGER, "GetManagedObjects")
        && dbus_message_has_path(message, manager_path))
        answer_managed_objects(message);
    else if (!take_command(message))
        return DBUS_HANDLER_RESULT_NOT_YET_HANDLED; /* a method call is answered with an error then */
    return DBUS_HANDLER_RESULT_HANDLED;
}

static void follow_host(void)
{
    DBusMessage *request = dbus_message_new_method_call(DAEMON, DBUS_PATH_DBUS, DAEMON, "GetNameOwner");
    char rule[512];
    snprintf(rule, sizeof rule, "sender='" DAEMON "',member='NameOwnerChanged',arg0='%s'", host_name);
    dbus_bus_add_match(bus, rule, NULL);
    dbus_bus_add_match(bus, "path='" SERVICE_PATH "',member='InterfacesAdded'", NULL);
    dbus_message_append_args(request, DBUS_TYPE_STRING, &host_name, DBUS_TYPE_INVALID);
    dbus_connection_send(bus, request, &owner_request);
    dbus_message_unref(request);
}

static void on_interrupt(int signal) { is_interrupted = true; }

int main(int argc, char *argv[])
{
    address = argc > 1 ? argv[1] : address;
    name = argc > 2 ? argv[2] : name;
    host_name = argc > 3 ? argv[3] : host_name;
    setvbuf(stdout, NULL, _IOLBF, 0);
    bus = dbus_bus_get(DBUS_BUS_SESSION, NULL); /* which ends the program when the bus goes */
    if (!bus || !dbus_connection_add_filter(bus, on_message, NULL, NULL)) {
        fputs("there is no session bus\n", stderr);
        return 1;
    }
    follow_host();
    signal(SIGINT, on_interrupt);
    while (!is_interrupted)
        dbus_connection_read_write_dispatch(bus, 100 /* milliseconds */);
    if (status > ENDED)
        end_call();
    dbus_connection_flush(bus);
    return 0;
}
