/* SPDX-FileCopyrightText: 2026 The Ringlet Authors
 * SPDX-License-Identifier: BSD-3-Clause
 *
 * One incoming call that the host can answer, reject, hold, send tones to and route the audio of.
 */

#define _GNU_SOURCE

#include <dbus/dbus.h>
#include <errno.h>
#include <getopt.h>
#include <poll.h>
#include <signal.h>
#include <stdarg.h>
#include <stdbool.h>
#include <stddef.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/signalfd.h>
#include <unistd.h>

#define PROGRAM "ringlet-example-libdbus"
#define MANAGER_PATH "/ringlet/example"
#define CALL_NAME "call1"
#define CALL_PATH MANAGER_PATH "/" CALL_NAME
#define SERVICE_PATH "/zelkovar/call/service"
#define CALL "zelkovar.Call.Call1"
#define DTMF "zelkovar.Call.DTMF1"
#define AUDIO "zelkovar.Call.AudioControl1"
#define SERVICE_MANAGER "zelkovar.Call.ServiceManager1"
#define OBJECT_MANAGER "org.freedesktop.DBus.ObjectManager"

#define COUNT(array) (sizeof(array) / sizeof *(array))

enum { STATUS_DISCONNECTED = 1, STATUS_INCOMING = 3, STATUS_ACTIVE = 5, STATUS_HELD = 7 };

typedef struct
{
    DBusConnection *bus;
    bool has_rung;
    bool is_up; /* rings, is active or is held */
    bool is_leaving;
    int exit_code;
    char host_owner[DBUS_MAXIMUM_NAME_LENGTH + 1]; /* unique name of the host, empty when there is none */
    const char *host;
    char input[256]; /* what was typed and is no whole line yet */
    size_t typed;

    /* The values of the call's properties; libdbus takes a boolean as 32 bits. */
    dbus_bool_t yes;
    dbus_uint32_t status;
    const char *name;
    const char *address;
} Example;

/* --- What is printed */

static void end_line(void)
{
    putchar('\n');
    fflush(stdout);
}

static void report(const char *format, ...) __attribute__((format(printf, 1, 2)));

static void report(const char *format, ...)
{
    va_list arguments;
    va_start(arguments, format);
    vprintf(format, arguments);
    va_end(arguments);
    end_line();
}

/* Text that came over the bus stays on its line, whatever is in it. */
static void print_quoted(const char *before, const char *text)
{
    static const char plain[] = "\n\r\t\"\\";
    static const char letter[] = "nrt\"\\";
    printf("%s\"", before);
    for (; *text; ++text) {
        const char *found = strchr(plain, *text);
        if (found)
            printf("\\%c", letter[found - plain]);
        else
            putchar(*text);
    }
    putchar('"');
}

static const char *status_name(dbus_uint32_t status)
{
    static const char *const names[]
        = {"disconnected", "disconnected", "dialing", "incoming", "disconnected", "active", "active", "held"};
    return status < COUNT(names) ? names[status] : "unknown";
}

/* --- Sending. Nothing fails here but for want of memory, and then libdbus has no way on either. */

static void send_message(Example *example, DBusMessage *message)
{
    dbus_connection_send(example->bus, message, NULL);
    dbus_message_unref(message);
}

static void reply_empty(Example *example, DBusMessage *request)
{
    send_message(example, dbus_message_new_method_return(request));
}

static void reply_error(Example *example, DBusMessage *request, const char *name, const char *text)
{
    send_message(example, dbus_message_new_error(request, name, text));
}

/* --- What the call tells of itself */

static const struct
{
    const char *name;
    int type;
    size_t value; /* where in Example */
} properties[] = {
    {"Holdable", DBUS_TYPE_BOOLEAN, offsetof(Example, yes)},
    {"Incoming", DBUS_TYPE_BOOLEAN, offsetof(Example, yes)},
    {"RemoteName", DBUS_TYPE_STRING, offsetof(Example, name)},
    {"Status", DBUS_TYPE_UINT32, offsetof(Example, status)},
    {"Uri", DBUS_TYPE_STRING, offsetof(Example, address)},
};

static const char *const call_interfaces[] = {CALL, DTMF, AUDIO};

/* A property's value as a variant. */
static void append_value(DBusMessageIter *to, const Example *example, size_t property)
{
    const char signature[] = {(char)properties[property].type, '\0'};
    DBusMessageIter variant;

    dbus_message_iter_open_container(to, DBUS_TYPE_VARIANT, signature, &variant);
    dbus_message_iter_append_basic(
        &variant, properties[property].type, (const char *)example + properties[property].value);
    dbus_message_iter_close_container(to, &variant);
}

/* a{sv}: the properties of one of the call's interfaces; only one has any. */
static void append_properties(DBusMessageIter *to, const Example *example, const char *interface)
{
    DBusMessageIter list;
    DBusMessageIter entry;

    dbus_message_iter_open_container(to, DBUS_TYPE_ARRAY, "{sv}", &list);
    for (size_t i = 0; i < COUNT(properties) && strcmp(interface, CALL) == 0; ++i) {
        dbus_message_iter_open_container(&list, DBUS_TYPE_DICT_ENTRY, NULL, &entry);
        dbus_message_iter_append_basic(&entry, DBUS_TYPE_STRING, &properties[i].name);
        append_value(&entry, example, i);
        dbus_message_iter_close_container(&list, &entry);
    }
    dbus_message_iter_close_container(to, &list);
}

/* oa{sa{sv}}: the call with all its interfaces. */
static void append_call(DBusMessageIter *to, const Example *example)
{
    static const char *const path = CALL_PATH;
    DBusMessageIter interfaces;
    DBusMessageIter entry;

    dbus_message_iter_append_basic(to, DBUS_TYPE_OBJECT_PATH, &path);
    dbus_message_iter_open_container(to, DBUS_TYPE_ARRAY, "{sa{sv}}", &interfaces);
    for (size_t i = 0; i < COUNT(call_interfaces); ++i) {
        dbus_message_iter_open_container(&interfaces, DBUS_TYPE_DICT_ENTRY, NULL, &entry);
        dbus_message_iter_append_basic(&entry, DBUS_TYPE_STRING, &call_interfaces[i]);
        append_properties(&entry, example, call_interfaces[i]);
        dbus_message_iter_close_container(&interfaces, &entry);
    }
    dbus_message_iter_close_container(to, &interfaces);
}

static void send_interfaces_added(Example *example)
{
    DBusMessage *signal = dbus_message_new_signal(MANAGER_PATH, OBJECT_MANAGER, "InterfacesAdded");
    DBusMessageIter arguments;

    dbus_message_iter_init_append(signal, &arguments);
    append_call(&arguments, example);
    send_message(example, signal);
}

static void send_interfaces_removed(Example *example)
{
    DBusMessage *signal = dbus_message_new_signal(MANAGER_PATH, OBJECT_MANAGER, "InterfacesRemoved");
    const char *path = CALL_PATH;
    const char *const *names = call_interfaces;

    dbus_message_append_args(signal, DBUS_TYPE_OBJECT_PATH, &path, DBUS_TYPE_ARRAY, DBUS_TYPE_STRING, &names,
        (int)COUNT(call_interfaces), DBUS_TYPE_INVALID);
    send_message(example, signal);
}

static void send_status(Example *example)
{
    DBusMessage *signal = dbus_message_new_signal(CALL_PATH, CALL, "StatusChanged");
    dbus_message_append_args(signal, DBUS_TYPE_UINT32, &example->status, DBUS_TYPE_INVALID);
    send_message(example, signal);
}

/* --- The call's life */

static void set_status(Example *example, dbus_uint32_t status)
{
    if (example->status == status)
        return;
    example->status = status;
    report(CALL_NAME " status %u %s", status, status_name(status));
    send_status(example);
}

static void ring(Example *example)
{
    example->has_rung = true;
    example->is_up = true;
    report(CALL_NAME " announced %d incoming", STATUS_INCOMING);
    send_interfaces_added(example);
}

/* The final status goes out before the interfaces do: behind them nobody listens any more. */
static void end_call(Example *example)
{
    if (!example->is_up)
        return;
    set_status(example, STATUS_DISCONNECTED);
    report(CALL_NAME " removed");
    example->is_up = false;
    send_interfaces_removed(example);
}

/* --- The host's commands. The arguments are those that the table below says. */

static void on_accept(Example *example, DBusMessage *request)
{
    report(CALL_NAME " command accept");
    if (example->status == STATUS_INCOMING)
        set_status(example, STATUS_ACTIVE);
    reply_empty(example, request);
}

static void on_reject(Example *example, DBusMessage *request)
{
    dbus_uint32_t reason = 0;
    dbus_message_get_args(request, NULL, DBUS_TYPE_UINT32, &reason, DBUS_TYPE_INVALID);
    report(CALL_NAME " command reject %u", reason);
    reply_empty(example, request);
    end_call(example);
}

static void on_set_hold(Example *example, DBusMessage *request)
{
    dbus_bool_t hold = FALSE;
    dbus_message_get_args(request, NULL, DBUS_TYPE_BOOLEAN, &hold, DBUS_TYPE_INVALID);
    report(CALL_NAME " command hold %s", hold ? "on" : "off");
    if (example->status == (hold ? STATUS_ACTIVE : STATUS_HELD))
        set_status(example, hold ? STATUS_HELD : STATUS_ACTIVE);
    reply_empty(example, request);
}

static void on_send_dtmf(Example *example, DBusMessage *request)
{
    const char *tones = "";
    dbus_message_get_args(request, NULL, DBUS_TYPE_STRING, &tones, DBUS_TYPE_INVALID);
    print_quoted(CALL_NAME " command tones ", tones);
    end_line();
    reply_empty(example, request);
}

/* The next argument, whatever its type; libdbus hands strings out as pointers into the message. */
#define READ(from, variable) (dbus_message_iter_get_basic(from, &(variable)), dbus_message_iter_next(from))

/* Mute and the selected devices, which both updates end with. */
static void print_route(const char *event, DBusMessageIter *from)
{
    dbus_bool_t muted;
    const char *input;
    const char *output;

    READ(from, muted);
    READ(from, input);
    READ(from, output);
    printf(CALL_NAME " %s muted=%s", event, muted ? "yes" : "no");
    print_quoted(" input=", input);
    print_quoted(" output=", output);
}

static void on_audio_route(Example *example, DBusMessage *request)
{
    DBusMessageIter arguments;
    dbus_message_iter_init(request, &arguments);
    print_route("audio-route", &arguments);
    end_line();
    reply_empty(example, request);
}

static void on_audio_state(Example *example, DBusMessage *request)
{
    DBusMessageIter arguments;
    DBusMessageIter device;
    DBusMessageIter member;

    dbus_message_iter_init(request, &arguments);
    dbus_message_iter_recurse(&arguments, &device);
    int count = dbus_message_iter_get_element_count(&arguments);
    dbus_message_iter_next(&arguments);
    print_route("audio-state", &arguments);
    printf(" devices=%d", count);
    for (; dbus_message_iter_get_arg_type(&device) == DBUS_TYPE_STRUCT; dbus_message_iter_next(&device)) {
        const char *id;
        dbus_message_iter_recurse(&device, &member);
        dbus_message_iter_get_basic(&member, &id);
        print_quoted(" ", id);
    }
    end_line();
    reply_empty(example, request);
}

/* --- The standard interfaces */

static void on_get_managed_objects(Example *example, DBusMessage *request)
{
    DBusMessage *reply = dbus_message_new_method_return(request);
    DBusMessageIter arguments;
    DBusMessageIter objects;
    DBusMessageIter entry;

    dbus_message_iter_init_append(reply, &arguments);
    dbus_message_iter_open_container(&arguments, DBUS_TYPE_ARRAY, "{oa{sa{sv}}}", &objects);
    if (example->is_up) {
        dbus_message_iter_open_container(&objects, DBUS_TYPE_DICT_ENTRY, NULL, &entry);
        append_call(&entry, example);
        dbus_message_iter_close_container(&objects, &entry);
    }
    dbus_message_iter_close_container(&arguments, &objects);
    send_message(example, reply);
}

static void on_get(Example *example, DBusMessage *request)
{
    const char *interface;
    const char *name;
    size_t i = 0;

    dbus_message_get_args(request, NULL, DBUS_TYPE_STRING, &interface, DBUS_TYPE_STRING, &name, DBUS_TYPE_INVALID);
    while (i < COUNT(properties) && strcmp(properties[i].name, name) != 0)
        ++i;
    if (i == COUNT(properties) || strcmp(interface, CALL) != 0) {
        reply_error(example, request, DBUS_ERROR_UNKNOWN_PROPERTY, "there is no such property");
        return;
    }
    DBusMessage *reply = dbus_message_new_method_return(request);
    DBusMessageIter arguments;
    dbus_message_iter_init_append(reply, &arguments);
    append_value(&arguments, example, i);
    send_message(example, reply);
}

static void on_get_all(Example *example, DBusMessage *request)
{
    const char *interface;
    DBusMessage *reply = dbus_message_new_method_return(request);
    DBusMessageIter arguments;

    dbus_message_get_args(request, NULL, DBUS_TYPE_STRING, &interface, DBUS_TYPE_INVALID);
    dbus_message_iter_init_append(reply, &arguments);
    append_properties(&arguments, example, interface);
    send_message(example, reply);
}

static void on_set(Example *example, DBusMessage *request)
{
    reply_error(example, request, DBUS_ERROR_PROPERTY_READ_ONLY, "all properties are read-only");
}

static void on_introspect(Example *example, DBusMessage *request);

/* Every method that can be called, object by object and interface by interface. */
typedef struct
{
    const char *path;
    const char *interface;
    const char *member;
    const char *in;
    const char *out;
    void (*handle)(Example *example, DBusMessage *request);
} Method;

static const Method methods[] = {
    {MANAGER_PATH, OBJECT_MANAGER, "GetManagedObjects", "", "a{oa{sa{sv}}}", on_get_managed_objects},
    {MANAGER_PATH, DBUS_INTERFACE_INTROSPECTABLE, "Introspect", "", "s", on_introspect},
    {CALL_PATH, CALL, "Accept", "", "", on_accept},
    {CALL_PATH, CALL, "Reject", "u", "", on_reject},
    {CALL_PATH, CALL, "SetHold", "b", "", on_set_hold},
    {CALL_PATH, DTMF, "SendDTMF", "s", "", on_send_dtmf},
    {CALL_PATH, AUDIO, "UpdateAudioRoute", "bss", "", on_audio_route},
    {CALL_PATH, AUDIO, "UpdateAudioRouteState", "a(sibbsa{sv})bss", "", on_audio_state},
    {CALL_PATH, DBUS_INTERFACE_PROPERTIES, "Get", "ss", "v", on_get},
    {CALL_PATH, DBUS_INTERFACE_PROPERTIES, "GetAll", "s", "a{sv}", on_get_all},
    {CALL_PATH, DBUS_INTERFACE_PROPERTIES, "Set", "ssv", "", on_set},
    {CALL_PATH, DBUS_INTERFACE_INTROSPECTABLE, "Introspect", "", "s", on_introspect},
};

static void describe_arguments(FILE *to, const char *signature, const char *direction)
{
    DBusSignatureIter argument;
    if (!*signature)
        return;
    dbus_signature_iter_init(&argument, signature);
    do {
        char *type = dbus_signature_iter_get_signature(&argument);
        fprintf(to, "<arg type=\"%s\" direction=\"%s\"/>", type, direction);
        dbus_free(type);
    } while (dbus_signature_iter_next(&argument));
}

/* Signals and properties of the one interface that has any of use. */
static void describe_call(FILE *to)
{
    fputs("<signal name=\"StatusChanged\"><arg type=\"u\"/></signal>", to);
    for (size_t i = 0; i < COUNT(properties); ++i)
        fprintf(
            to, "<property name=\"%s\" type=\"%c\" access=\"read\"/>", properties[i].name, (char)properties[i].type);
}

static void describe_object(FILE *to, const char *path)
{
    const char *open = "";
    for (const Method *method = methods; method < methods + COUNT(methods); ++method) {
        if (strcmp(method->path, path) != 0)
            continue;
        if (strcmp(open, method->interface) != 0) {
            fprintf(to, "%s<interface name=\"%s\">", *open ? "</interface>" : "", method->interface);
            open = method->interface;
            if (strcmp(open, CALL) == 0)
                describe_call(to);
        }
        fprintf(to, "<method name=\"%s\">", method->member);
        describe_arguments(to, method->in, "in");
        describe_arguments(to, method->out, "out");
        fputs("</method>", to);
    }
    fputs("</interface>", to);
}

static void on_introspect(Example *example, DBusMessage *request)
{
    DBusMessage *reply = dbus_message_new_method_return(request);
    const char *path = dbus_message_get_path(request);
    char *text = NULL;
    size_t size = 0;
    FILE *to = open_memstream(&text, &size);

    if (!to) {
        dbus_message_unref(reply);
        reply_error(example, request, DBUS_ERROR_NO_MEMORY, strerror(errno));
        return;
    }
    fputs(DBUS_INTROSPECT_1_0_XML_DOCTYPE_DECL_NODE "<node>", to);
    describe_object(to, path);
    if (example->is_up && strcmp(path, MANAGER_PATH) == 0)
        fputs("<node name=\"" CALL_NAME "\"/>", to);
    fputs("</node>", to);
    fclose(to);
    dbus_message_append_args(reply, DBUS_TYPE_STRING, &text, DBUS_TYPE_INVALID);
    free(text);
    send_message(example, reply);
}

/* Nothing is at the call's path while there is no call. What is not known here libdbus answers itself. */
static DBusHandlerResult on_method_call(DBusConnection *bus, DBusMessage *request, void *data)
{
    Example *example = data;
    const char *path = dbus_message_get_path(request);

    (void)bus;
    if (strcmp(path, CALL_PATH) == 0 && !example->is_up)
        return DBUS_HANDLER_RESULT_NOT_YET_HANDLED;
    for (const Method *method = methods; method < methods + COUNT(methods); ++method) {
        if (strcmp(method->path, path) != 0 || !dbus_message_is_method_call(request, method->interface, method->member))
            continue;
        if (dbus_message_has_signature(request, method->in))
            method->handle(example, request);
        else
            reply_error(example, request, DBUS_ERROR_INVALID_ARGS, "the arguments are of another type");
        return DBUS_HANDLER_RESULT_HANDLED;
    }
    return DBUS_HANDLER_RESULT_NOT_YET_HANDLED;
}

/* --- The host */

/* Goes through an a{s*}: leads to the value of a key, or says that there is none. */
static bool find_value(DBusMessageIter *dictionary, const char *key, DBusMessageIter *value)
{
    DBusMessageIter entries;
    DBusMessageIter entry;
    dbus_message_iter_recurse(dictionary, &entries);
    for (; dbus_message_iter_get_arg_type(&entries) == DBUS_TYPE_DICT_ENTRY; dbus_message_iter_next(&entries)) {
        const char *found;
        dbus_message_iter_recurse(&entries, &entry);
        READ(&entry, found);
        *value = entry;
        if (strcmp(found, key) == 0)
            return true;
    }
    return false;
}

/* The Status of a call in an a{sa{sv}}. */
static bool find_status(DBusMessageIter *interfaces, dbus_uint32_t *status)
{
    DBusMessageIter call;
    DBusMessageIter variant;
    DBusMessageIter value;
    if (!find_value(interfaces, CALL, &call) || !find_value(&call, "Status", &variant))
        return false;
    dbus_message_iter_recurse(&variant, &value);
    if (dbus_message_iter_get_arg_type(&value) != DBUS_TYPE_UINT32)
        return false;
    dbus_message_iter_get_basic(&value, status);
    return true;
}

/* The host tells that it shows the call. It listens to the status only since then, and never asks for it:
 * if it has changed meanwhile, the host must be told again. */
static void on_shown(Example *example, DBusMessage *signal)
{
    DBusMessageIter arguments;
    const char *application;
    const char *path;
    dbus_uint32_t shown;

    if (!example->is_up || !dbus_message_has_sender(signal, example->host_owner)
        || !dbus_message_has_signature(signal, "soa{sa{sv}}"))
        return;
    dbus_message_iter_init(signal, &arguments);
    READ(&arguments, application);
    READ(&arguments, path);
    if (strcmp(application, dbus_bus_get_unique_name(example->bus)) != 0 || strcmp(path, CALL_PATH) != 0
        || !find_status(&arguments, &shown))
        return;
    report(CALL_NAME " shown %u %s", shown, status_name(shown));
    if (shown != example->status) {
        report(CALL_NAME " status %u %s again", example->status, status_name(example->status));
        send_status(example);
    }
}

/* Only now may the call be announced. Before, it would be reported twice: by its announcement, and again
 * in what the host asks for during the registration. A call that is there already is told by the latter. */
static void on_registered(DBusPendingCall *pending, void *data)
{
    Example *example = data;
    DBusMessage *reply = dbus_pending_call_steal_reply(pending);
    DBusError error = DBUS_ERROR_INIT;

    if (dbus_set_error_from_message(&error, reply)) {
        printf("refused " MANAGER_PATH " %s", error.name);
        print_quoted(" ", error.message);
        end_line();
        dbus_error_free(&error);
    } else {
        report("registered " MANAGER_PATH);
        if (!example->has_rung)
            ring(example);
    }
    dbus_message_unref(reply);
}

/* Without a limit in time: when the host dies, the bus answers in its place. */
static void call_method(Example *example, DBusMessage *request, DBusPendingCallNotifyFunction on_reply)
{
    DBusPendingCall *pending = NULL;
    dbus_connection_send_with_reply(example->bus, request, &pending, DBUS_TIMEOUT_INFINITE);
    dbus_message_unref(request);
    if (!pending) /* the connection has closed */
        return;
    dbus_pending_call_set_notify(pending, on_reply, example, NULL);
    dbus_pending_call_unref(pending);
}

static void register_call_manager(Example *example)
{
    const char *path = MANAGER_PATH;
    DBusMessage *request = dbus_message_new_method_call(
        example->host_owner, SERVICE_PATH, "zelkovar.Call.Service1", "RegisterCallManager");
    dbus_message_append_args(request, DBUS_TYPE_OBJECT_PATH, &path, DBUS_TYPE_INVALID);
    call_method(example, request, on_registered);
}

static void set_host_owner(Example *example, const char *owner)
{
    if (*example->host_owner)
        report("host gone");
    snprintf(example->host_owner, sizeof example->host_owner, "%s", owner);
    if (*owner) {
        report("host appeared %s", owner);
        register_call_manager(example);
    } else {
        report("waiting for host %s", example->host);
    }
}

/* Who has the host's name at the start. If that changes meanwhile, the bus has told of it before. */
static void on_owner(DBusPendingCall *pending, void *data)
{
    Example *example = data;
    DBusMessage *reply = dbus_pending_call_steal_reply(pending);
    const char *owner;

    if (dbus_message_get_type(reply) == DBUS_MESSAGE_TYPE_ERROR
        || !dbus_message_get_args(reply, NULL, DBUS_TYPE_STRING, &owner, DBUS_TYPE_INVALID))
        report("waiting for host %s", example->host);
    else if (!*example->host_owner)
        set_host_owner(example, owner);
    dbus_message_unref(reply);
}

static void on_owner_changed(Example *example, DBusMessage *signal)
{
    const char *name;
    const char *before;
    const char *owner;
    if (dbus_message_get_args(signal, NULL, DBUS_TYPE_STRING, &name, DBUS_TYPE_STRING, &before, DBUS_TYPE_STRING,
            &owner, DBUS_TYPE_INVALID)
        && strcmp(name, example->host) == 0)
        set_host_owner(example, owner);
}

static DBusHandlerResult on_message(DBusConnection *bus, DBusMessage *message, void *data)
{
    Example *example = data;

    (void)bus;
    if (dbus_message_is_signal(message, SERVICE_MANAGER, "InterfacesAdded")) {
        on_shown(example, message);
    } else if (dbus_message_is_signal(message, DBUS_INTERFACE_DBUS, "NameOwnerChanged")
        && dbus_message_has_sender(message, DBUS_SERVICE_DBUS)) {
        on_owner_changed(example, message);
    } else if (dbus_message_is_signal(message, DBUS_INTERFACE_LOCAL, "Disconnected")) {
        fputs(PROGRAM ": the session bus has gone\n", stderr);
        example->exit_code = 3;
        example->is_leaving = true;
    }
    return DBUS_HANDLER_RESULT_NOT_YET_HANDLED;
}

static void look_for_host(Example *example)
{
    DBusMessage *request
        = dbus_message_new_method_call(DBUS_SERVICE_DBUS, DBUS_PATH_DBUS, DBUS_INTERFACE_DBUS, "GetNameOwner");
    char rule[512];

    snprintf(rule, sizeof rule,
        "type='signal',path='" SERVICE_PATH "',interface='" SERVICE_MANAGER "',member='InterfacesAdded',arg0='%s'",
        dbus_bus_get_unique_name(example->bus));
    dbus_bus_add_match(example->bus, rule, NULL);
    snprintf(rule, sizeof rule,
        "type='signal',sender='" DBUS_SERVICE_DBUS "',interface='" DBUS_INTERFACE_DBUS "',"
        "member='NameOwnerChanged',arg0='%s'",
        example->host);
    dbus_bus_add_match(example->bus, rule, NULL);
    dbus_message_append_args(request, DBUS_TYPE_STRING, &example->host, DBUS_TYPE_INVALID);
    call_method(example, request, on_owner);
}

/* --- The program */

static void obey(Example *example, const char *line)
{
    if (strcmp(line, "hangup") == 0)
        end_call(example);
    else if (strcmp(line, "quit") == 0)
        example->is_leaving = true;
    else
        fprintf(stderr, PROGRAM ": unknown command \"%s\"; there are hangup and quit\n", line);
}

/* False at the end of the input. */
static bool read_input(Example *example)
{
    char *line = example->input;
    char *end;
    ssize_t size = read(STDIN_FILENO, line + example->typed, sizeof example->input - 1 - example->typed);

    if (size <= 0)
        return false;
    line[example->typed + (size_t)size] = '\0';
    while ((end = strchr(line, '\n'))) {
        *end = '\0';
        obey(example, line);
        line = end + 1;
    }
    example->typed = strlen(line);
    if (example->typed == sizeof example->input - 1) {
        obey(example, line); /* which is longer than any command */
        example->typed = 0;
    }
    memmove(example->input, line, example->typed);
    return true;
}

/* SIGINT and SIGTERM, as something that can be polled. */
static int stop_signals(void)
{
    sigset_t stops;
    sigemptyset(&stops);
    sigaddset(&stops, SIGINT);
    sigaddset(&stops, SIGTERM);
    sigprocmask(SIG_BLOCK, &stops, NULL);
    return signalfd(-1, &stops, SFD_CLOEXEC);
}

/* Reads and writes what can be without waiting, and handles what has arrived. */
static void process(Example *example)
{
    dbus_connection_read_write(example->bus, 0);
    while (dbus_connection_dispatch(example->bus) == DBUS_DISPATCH_DATA_REMAINS) { }
}

static void run(Example *example)
{
    enum { BUS, INPUT, STOP };
    struct pollfd sources[]
        = {{.events = POLLIN}, {.fd = STDIN_FILENO, .events = POLLIN}, {.fd = stop_signals(), .events = POLLIN}};

    dbus_connection_get_unix_fd(example->bus, &sources[BUS].fd);
    for (process(example); !example->is_leaving; process(example)) {
        sources[BUS].events = (short)(POLLIN | (dbus_connection_has_messages_to_send(example->bus) ? POLLOUT : 0));
        poll(sources, COUNT(sources), -1);
        if (sources[INPUT].revents && !read_input(example))
            sources[INPUT].fd = -1; /* the end of the input is not the end of the call */
        if (sources[STOP].revents)
            example->is_leaving = true;
    }
    end_call(example);
    dbus_connection_flush(example->bus);
    close(sources[STOP].fd);
}

static bool export_objects(Example *example)
{
    static const DBusObjectPathVTable table = {.message_function = on_method_call};
    return dbus_connection_add_filter(example->bus, on_message, example, NULL)
        && dbus_connection_register_object_path(example->bus, MANAGER_PATH, &table, example)
        && dbus_connection_register_object_path(example->bus, CALL_PATH, &table, example);
}

/* Whether the options are what the bus takes. */
static bool read_options(int argc, char *argv[], Example *example)
{
    static const struct option options[] = {
        {"host", required_argument, NULL, 'h'},
        {"name", required_argument, NULL, 'n'},
        {"address", required_argument, NULL, 'a'},
        {NULL, 0, NULL, 0},
    };
    int option;

    while ((option = getopt_long(argc, argv, "", options, NULL)) != -1) {
        if (option == 'h')
            example->host = optarg;
        else if (option == 'n')
            example->name = optarg;
        else if (option == 'a')
            example->address = optarg;
        else
            return false; /* getopt has said why */
    }
    if (optind < argc)
        fprintf(stderr, PROGRAM ": '%s' is no option; there are --host, --name and --address\n", argv[optind]);
    else if (!dbus_validate_bus_name(example->host, NULL))
        fputs(PROGRAM ": --host is no bus name; one is like org.example.Host\n", stderr);
    else if (!dbus_validate_utf8(example->name, NULL) || !dbus_validate_utf8(example->address, NULL))
        fputs(PROGRAM ": --name and --address must be UTF-8\n", stderr);
    else
        return true;
    return false;
}

int main(int argc, char *argv[])
{
    Example example = {
        .host = "org.tarnwickle.voicecall",
        .yes = TRUE,
        .status = STATUS_INCOMING,
        .name = "",
        .address = "sip:caller@example.org",
    };
    DBusError error = DBUS_ERROR_INIT;

    if (!read_options(argc, argv, &example))
        return 2;
    example.bus = dbus_bus_get_private(DBUS_BUS_SESSION, &error);
    if (!example.bus) {
        fprintf(stderr, PROGRAM ": %s\n", error.message);
        dbus_error_free(&error);
        return 3;
    }
    dbus_connection_set_exit_on_disconnect(example.bus, FALSE);
    report("connected %s", dbus_bus_get_unique_name(example.bus));
    if (export_objects(&example)) {
        look_for_host(&example);
        run(&example);
    }
    dbus_connection_close(example.bus);
    dbus_connection_unref(example.bus);
    return example.exit_code;
}
