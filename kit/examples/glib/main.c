/* SPDX-FileCopyrightText: 2026 The Ringlet Authors
 * SPDX-License-Identifier: BSD-3-Clause
 *
 * One incoming call that the host can answer, reject, hold, send tones to and route the audio of.
 */

#include "ringletcalls.h"

#include <gio/gunixinputstream.h>
#include <glib-unix.h>
#include <stdio.h>
#include <string.h>
#include <unistd.h>

#define MANAGER_PATH "/ringlet/example"
#define CALL_NAME "call1"
#define CALL_PATH MANAGER_PATH "/" CALL_NAME
#define SERVICE_PATH "/zelkovar/call/service"

enum { STATUS_DISCONNECTED = 1, STATUS_INCOMING = 3, STATUS_ACTIVE = 5, STATUS_HELD = 7 };

typedef struct
{
    GMainLoop *loop;
    GDBusConnection *bus;
    GDBusObjectManagerServer *manager;
    RingletCall1 *call; /* NULL before it rings and after it has ended */
    gboolean has_rung;
    char *host_owner; /* unique name of the host, NULL when there is none */
    const char *host;
    const char *name;
    const char *address;
    int exit_code;
} Example;

static void report(const char *format, ...) G_GNUC_PRINTF(1, 2);

static void report(const char *format, ...)
{
    va_list arguments;
    va_start(arguments, format);
    vprintf(format, arguments);
    va_end(arguments);
    putchar('\n');
    fflush(stdout);
}

/* Text that came over the bus stays on its line, whatever is in it. */
static char *quoted(const char *text)
{
    static const char plain[] = "\n\r\t\"\\";
    static const char letter[] = "nrt\"\\";
    GString *result = g_string_new("\"");
    for (; *text; ++text) {
        const char *found = strchr(plain, *text);
        if (found)
            g_string_append_printf(result, "\\%c", letter[found - plain]);
        else
            g_string_append_c(result, *text);
    }
    g_string_append_c(result, '"');
    return g_string_free(result, FALSE);
}

/* --- The call */

static const char *status_name(guint status)
{
    static const char *const names[]
        = {"disconnected", "disconnected", "dialing", "incoming", "disconnected", "active", "active", "held"};
    return status < G_N_ELEMENTS(names) ? names[status] : "unknown";
}

static void set_status(Example *example, guint status)
{
    if (ringlet_call1_get_status(example->call) == status)
        return;
    ringlet_call1_set_status(example->call, status);
    report(CALL_NAME " status %u %s", status, status_name(status));
    ringlet_call1_emit_status_changed(example->call, status);
}

/* The final status goes out before the interfaces do: behind them nobody listens any more. */
static void end_call(Example *example)
{
    if (!example->call)
        return;
    set_status(example, STATUS_DISCONNECTED);
    report(CALL_NAME " removed");
    g_dbus_object_manager_server_unexport(example->manager, CALL_PATH);
    g_clear_object(&example->call);
}

static gboolean on_accept(RingletCall1 *call, GDBusMethodInvocation *invocation, Example *example)
{
    report(CALL_NAME " command accept");
    if (ringlet_call1_get_status(call) == STATUS_INCOMING)
        set_status(example, STATUS_ACTIVE);
    ringlet_call1_complete_accept(call, invocation);
    return TRUE;
}

static gboolean on_reject(RingletCall1 *call, GDBusMethodInvocation *invocation, guint reason, Example *example)
{
    report(CALL_NAME " command reject %u", reason);
    ringlet_call1_complete_reject(call, invocation);
    end_call(example);
    return TRUE;
}

static gboolean on_set_hold(RingletCall1 *call, GDBusMethodInvocation *invocation, gboolean hold, Example *example)
{
    report(CALL_NAME " command hold %s", hold ? "on" : "off");
    if (ringlet_call1_get_status(call) == (hold ? STATUS_ACTIVE : STATUS_HELD))
        set_status(example, hold ? STATUS_HELD : STATUS_ACTIVE);
    ringlet_call1_complete_set_hold(call, invocation);
    return TRUE;
}

static gboolean on_send_dtmf(RingletDTMF1 *dtmf, GDBusMethodInvocation *invocation, const char *tones)
{
    g_autofree char *text = quoted(tones);
    report(CALL_NAME " command tones %s", text);
    ringlet_dtmf1_complete_send_dtmf(dtmf, invocation);
    return TRUE;
}

static char *route_text(gboolean muted, const char *input, const char *output)
{
    g_autofree char *input_text = quoted(input);
    g_autofree char *output_text = quoted(output);
    return g_strdup_printf("muted=%s input=%s output=%s", muted ? "yes" : "no", input_text, output_text);
}

static gboolean on_audio_route(RingletAudioControl1 *audio, GDBusMethodInvocation *invocation, gboolean muted,
    const char *input, const char *output)
{
    g_autofree char *route = route_text(muted, input, output);
    report(CALL_NAME " audio-route %s", route);
    ringlet_audio_control1_complete_update_audio_route(audio, invocation);
    return TRUE;
}

static gboolean on_audio_state(RingletAudioControl1 *audio, GDBusMethodInvocation *invocation, GVariant *devices,
    gboolean muted, const char *input, const char *output)
{
    g_autofree char *route = route_text(muted, input, output);
    GString *ids = g_string_new(NULL);
    GVariantIter device;
    const char *id;
    g_variant_iter_init(&device, devices);
    while (g_variant_iter_next(&device, "(&sibb&s@a{sv})", &id, NULL, NULL, NULL, NULL, NULL)) {
        g_autofree char *text = quoted(id);
        g_string_append_printf(ids, " %s", text);
    }
    report(CALL_NAME " audio-state %s devices=%" G_GSIZE_FORMAT "%s", route, g_variant_n_children(devices), ids->str);
    g_string_free(ids, TRUE);
    ringlet_audio_control1_complete_update_audio_route_state(audio, invocation);
    return TRUE;
}

static RingletCall1 *new_call(Example *example)
{
    RingletCall1 *call = ringlet_call1_skeleton_new();
    g_object_set(call, "incoming", TRUE, "status", STATUS_INCOMING, "holdable", TRUE, "remote-name", example->name,
        "remote-handle", example->address, "uri", example->address, "local-name", "GLib example", "local-handle", "",
        NULL);
    g_signal_connect(call, "handle-accept", G_CALLBACK(on_accept), example);
    g_signal_connect(call, "handle-reject", G_CALLBACK(on_reject), example);
    g_signal_connect(call, "handle-set-hold", G_CALLBACK(on_set_hold), example);
    return call;
}

/* Exporting the object announces it with all its interfaces at once. */
static void ring(Example *example)
{
    RingletObjectSkeleton *object = ringlet_object_skeleton_new(CALL_PATH);
    RingletDTMF1 *dtmf = ringlet_dtmf1_skeleton_new();
    RingletAudioControl1 *audio = ringlet_audio_control1_skeleton_new();

    g_signal_connect(dtmf, "handle-send-dtmf", G_CALLBACK(on_send_dtmf), NULL);
    g_signal_connect(audio, "handle-update-audio-route", G_CALLBACK(on_audio_route), NULL);
    g_signal_connect(audio, "handle-update-audio-route-state", G_CALLBACK(on_audio_state), NULL);
    example->call = new_call(example);
    example->has_rung = TRUE;
    ringlet_object_skeleton_set_call1(object, example->call);
    ringlet_object_skeleton_set_dtmf1(object, dtmf);
    ringlet_object_skeleton_set_audio_control1(object, audio);

    report(CALL_NAME " announced %d incoming", STATUS_INCOMING);
    g_dbus_object_manager_server_export(example->manager, G_DBUS_OBJECT_SKELETON(object));
    g_object_unref(dtmf);
    g_object_unref(audio);
    g_object_unref(object);
}

/* --- The host */

/* The host tells that it shows the call. It listens to the status only since then, and never asks for it:
 * if it has changed meanwhile, the host must be told again. */
static void on_shown(GDBusConnection *bus, const char *sender, const char *path, const char *interface,
    const char *member, GVariant *arguments, gpointer data)
{
    Example *example = data;
    const char *object;
    GVariant *interfaces;
    GVariant *properties;
    guint shown;

    g_variant_get(arguments, "(&s&o@a{sa{sv}})", NULL, &object, &interfaces);
    properties = g_variant_lookup_value(interfaces, "zelkovar.Call.Call1", G_VARIANT_TYPE_VARDICT);
    if (example->call && g_str_equal(object, CALL_PATH) && g_strcmp0(sender, example->host_owner) == 0 && properties
        && g_variant_lookup(properties, "Status", "u", &shown)) {
        guint status = ringlet_call1_get_status(example->call);
        report(CALL_NAME " shown %u %s", shown, status_name(shown));
        if (status != shown) {
            report(CALL_NAME " status %u %s again", status, status_name(status));
            ringlet_call1_emit_status_changed(example->call, status);
        }
    }
    g_clear_pointer(&properties, g_variant_unref);
    g_variant_unref(interfaces);
}

/* Only now may the call be announced. Before, it would be reported twice: by its announcement, and again
 * in what the host asks for during the registration. A call that is there already is told by the latter. */
static void on_registered(GObject *bus, GAsyncResult *result, gpointer data)
{
    Example *example = data;
    GError *error = NULL;
    GVariant *reply = g_dbus_connection_call_finish(G_DBUS_CONNECTION(bus), result, &error);

    if (reply) {
        report("registered " MANAGER_PATH);
        if (!example->has_rung)
            ring(example);
        g_variant_unref(reply);
    } else {
        g_autofree char *name = g_dbus_error_get_remote_error(error);
        g_autofree char *text = NULL;
        g_dbus_error_strip_remote_error(error);
        text = quoted(error->message);
        report("refused " MANAGER_PATH " %s %s", name ? name : "org.freedesktop.DBus.Error.Failed", text);
        g_error_free(error);
    }
}

static void on_host_appeared(GDBusConnection *bus, const char *host, const char *owner, gpointer data)
{
    Example *example = data;

    example->host_owner = g_strdup(owner);
    report("host appeared %s", owner);
    g_dbus_connection_call(bus, owner, SERVICE_PATH, "zelkovar.Call.Service1", "RegisterCallManager",
        g_variant_new("(o)", MANAGER_PATH), NULL, G_DBUS_CALL_FLAGS_NO_AUTO_START, -1, NULL, on_registered, example);
}

static void on_host_vanished(GDBusConnection *bus, const char *host, gpointer data)
{
    Example *example = data;

    if (example->host_owner)
        report("host gone");
    g_clear_pointer(&example->host_owner, g_free);
    report("waiting for host %s", host);
}

/* --- The program */

static void on_left(GObject *bus, GAsyncResult *result, gpointer data)
{
    g_dbus_connection_flush_finish(G_DBUS_CONNECTION(bus), result, NULL);
    g_main_loop_quit(((Example *)data)->loop);
}

static gboolean leave(gpointer data)
{
    Example *example = data;

    end_call(example);
    g_dbus_connection_flush(example->bus, NULL, on_left, example);
    return G_SOURCE_REMOVE;
}

static void on_bus_closed(GDBusConnection *bus, gboolean remote_peer_vanished, GError *error, gpointer data)
{
    Example *example = data;

    fputs("ringlet-example-glib: the session bus has gone\n", stderr);
    example->exit_code = 3;
    g_main_loop_quit(example->loop);
}

static void on_line(GObject *input, GAsyncResult *result, gpointer data)
{
    Example *example = data;
    char *line = g_data_input_stream_read_line_finish(G_DATA_INPUT_STREAM(input), result, NULL, NULL);

    if (!line)
        return;
    if (g_str_equal(line, "hangup"))
        end_call(example);
    else if (g_str_equal(line, "quit"))
        leave(example);
    else
        fprintf(stderr, "ringlet-example-glib: unknown command \"%s\"; there are hangup and quit\n", line);
    g_free(line);
    g_data_input_stream_read_line_async(G_DATA_INPUT_STREAM(input), G_PRIORITY_DEFAULT, NULL, on_line, example);
}

static int complain(GError *error, int exit_code)
{
    fprintf(stderr, "ringlet-example-glib: %s\n", error->message);
    g_error_free(error);
    return exit_code;
}

/* What the options may be, so that the bus takes it. */
static const char *options_fault(const Example *example)
{
    if (!g_dbus_is_name(example->host))
        return "--host is no bus name; one is like org.example.Host";
    if (!g_utf8_validate(example->name, -1, NULL) || !g_utf8_validate(example->address, -1, NULL))
        return "--name and --address must be UTF-8";
    return NULL;
}

static void run(Example *example)
{
    GInputStream *raw = g_unix_input_stream_new(STDIN_FILENO, FALSE);
    GDataInputStream *input = g_data_input_stream_new(raw);
    guint watch;
    guint subscription;

    example->loop = g_main_loop_new(NULL, FALSE);
    example->manager = g_dbus_object_manager_server_new(MANAGER_PATH);
    g_dbus_object_manager_server_set_connection(example->manager, example->bus);
    g_dbus_connection_set_exit_on_close(example->bus, FALSE);
    g_signal_connect(example->bus, "closed", G_CALLBACK(on_bus_closed), example);
    report("connected %s", g_dbus_connection_get_unique_name(example->bus));

    subscription = g_dbus_connection_signal_subscribe(example->bus, NULL, "zelkovar.Call.ServiceManager1",
        "InterfacesAdded", SERVICE_PATH, g_dbus_connection_get_unique_name(example->bus), G_DBUS_SIGNAL_FLAGS_NONE,
        on_shown, example, NULL);
    watch = g_bus_watch_name_on_connection(
        example->bus, example->host, G_BUS_NAME_WATCHER_FLAGS_NONE, on_host_appeared, on_host_vanished, example, NULL);
    g_unix_signal_add(SIGINT, leave, example);
    g_unix_signal_add(SIGTERM, leave, example);
    g_data_input_stream_read_line_async(input, G_PRIORITY_DEFAULT, NULL, on_line, example);
    g_main_loop_run(example->loop);

    g_bus_unwatch_name(watch);
    g_dbus_connection_signal_unsubscribe(example->bus, subscription);
    g_clear_object(&example->call);
    g_object_unref(example->manager);
    g_object_unref(input);
    g_object_unref(raw);
    g_free(example->host_owner);
    g_main_loop_unref(example->loop);
}

int main(int argc, char *argv[])
{
    Example example = {0};
    g_autofree char *host = NULL;
    g_autofree char *name = NULL;
    g_autofree char *address = NULL;
    /* Taken byte by byte: G_OPTION_ARG_STRING would refuse what the locale cannot write. */
    const GOptionEntry options[] = {
        {"host", 0, 0, G_OPTION_ARG_FILENAME, &host, "Bus name of the host [org.tarnwickle.voicecall]", "NAME"},
        {"name", 0, 0, G_OPTION_ARG_FILENAME, &name, "Name of the caller", "TEXT"},
        {"address", 0, 0, G_OPTION_ARG_FILENAME, &address, "Address of the caller", "ADDRESS"},
        G_OPTION_ENTRY_NULL,
    };
    GOptionContext *context = g_option_context_new("- one incoming call for a voice-call host");
    GError *error = NULL;
    gboolean parsed;

    g_option_context_add_main_entries(context, options, NULL);
    parsed = g_option_context_parse(context, &argc, &argv, &error);
    g_option_context_free(context);
    example.host = host ? host : "org.tarnwickle.voicecall";
    example.name = name ? name : "";
    example.address = address ? address : "sip:caller@example.org";
    if (parsed && argc > 1)
        g_set_error(&error, G_OPTION_ERROR, G_OPTION_ERROR_BAD_VALUE,
            "'%s' is no option; there are --host, --name and --address", argv[1]);
    else if (parsed && options_fault(&example))
        g_set_error_literal(&error, G_OPTION_ERROR, G_OPTION_ERROR_BAD_VALUE, options_fault(&example));
    if (error)
        return complain(error, 2);
    example.bus = g_bus_get_sync(G_BUS_TYPE_SESSION, NULL, &error);
    if (!example.bus)
        return complain(error, 3);
    run(&example);
    g_object_unref(example.bus);
    return example.exit_code;
}
