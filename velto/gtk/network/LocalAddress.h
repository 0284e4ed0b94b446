// What belongs to this machine and to the network around it, where no advertisement has any business. Any thread.
#pragma once

#include <gio/gio.h>
#include <sys/socket.h>

#include <string>

namespace velto::gtk {

// Addresses that the internet does not lead to (loopback, private, link-local, shared, unique local, multicast, with those
// that only wrap one of them), and those that this machine has itself.
bool isLocalAddress(GInetAddress* address);
bool isLocalAddress(const sockaddr& address);

// Whether a host's name says so by itself, where somebody else resolves it: a local address as a text, a name without
// domain, one of the machine or of the local link.
bool isLocalName(const std::string& host);

}  // namespace velto::gtk
