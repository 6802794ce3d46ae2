"""Stands in for polkit's authority on a private bus, for the disk helper's tests.

Owns org.freedesktop.PolicyKit1 on the bus at ADDRESS and answers CheckAuthorization: allowed when
the action is listed, one per line, in the file ALLOW (read again at every call, so a test changes
the answer by rewriting it). Every question goes to LOG as "action subject-kind name". Prints
"READY" once it owns the name and runs until its standard input closes.
"""
import sys
import threading

from gi.repository import Gio, GLib

INTERFACE = """
<node>
  <interface name="org.freedesktop.PolicyKit1.Authority">
    <method name="CheckAuthorization">
      <arg type="(sa{sv})" name="subject" direction="in"/>
      <arg type="s" name="action_id" direction="in"/>
      <arg type="a{ss}" name="details" direction="in"/>
      <arg type="u" name="flags" direction="in"/>
      <arg type="s" name="cancellation_id" direction="in"/>
      <arg type="(bba{ss})" name="result" direction="out"/>
    </method>
  </interface>
</node>
"""


def main():
    address, allow_file, log_file = sys.argv[1:4]
    loop = GLib.MainLoop()
    bus = Gio.DBusConnection.new_for_address_sync(
        address,
        Gio.DBusConnectionFlags.AUTHENTICATION_CLIENT | Gio.DBusConnectionFlags.MESSAGE_BUS_CONNECTION,
        None, None)

    def on_call(connection, sender, path, interface, method, params, invocation):
        (kind, fields), action = params.unpack()[0], params.unpack()[1]
        with open(log_file, "a") as log:
            log.write("%s %s %s\n" % (action, kind, fields.get("name", "")))
        with open(allow_file) as f:
            allowed = action in f.read().split()
        invocation.return_value(GLib.Variant("((bba{ss}))", ((allowed, False, {}),)))

    node = Gio.DBusNodeInfo.new_for_xml(INTERFACE)
    bus.register_object("/org/freedesktop/PolicyKit1/Authority", node.interfaces[0], on_call, None, None)
    reply = bus.call_sync("org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus",
                          "RequestName", GLib.Variant("(su)", ("org.freedesktop.PolicyKit1", 4)),
                          None, Gio.DBusCallFlags.NONE, -1, None)
    if reply.unpack()[0] != 1:
        sys.exit("polkit_standin: the name is taken")
    print("READY", flush=True)

    def wait_for_stdin():
        sys.stdin.read()
        GLib.idle_add(loop.quit)

    threading.Thread(target=wait_for_stdin, daemon=True).start()
    loop.run()


if __name__ == "__main__":
    main()
