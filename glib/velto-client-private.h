// A client's values, and how they reach the library. Texts, switches and choices stand in tables by property, since most
// of what is done with them is the same.
#pragma once

#include <array>
#include <memory>
#include <optional>
#include <string>

#include "velto-private.h"

namespace velto_glib {

enum ClientProperty : guint {
  // Texts, of which those up to the tracking server are read when the client starts.
  ClientApplicationId = 1,
  ClientApplicationName,
  ClientAdServer,
  ClientPublisherServer,
  ClientTrackingServer,
  ClientPublisherKey,
  ClientEndpoint,
  ClientGdprConsent,
  ClientUsPrivacy,
  ClientVersion,
  // Switches.
  ClientTestMode,
  ClientPersonalInfoAllowed,
  ClientCollectMetrics,
  // Choices.
  ClientCalendarAccess,
  ClientPicturesAccess,
  ClientInForeground,
  // The rest, read when the client starts.
  ClientCaFile,
  ClientHostMap,
  ClientRequestTimeout,
  ClientLocalNetworkAllowed,  // a switch
  ClientLeastTimeUnderTouch,
  ClientProperties
};

constexpr guint defaultRequestTimeout = 60;        // seconds
constexpr guint defaultLeastTimeUnderTouch = 300;  // milliseconds

struct ClientValues {
  std::array<std::optional<std::string>, ClientProperties> texts;
  std::array<int, ClientProperties> numbers{};  // switches and choices
  GFile* caFile = nullptr;
  GVariant* hostMap = nullptr;
  guint requestTimeout = defaultRequestTimeout;
  guint leastTimeUnderTouch = defaultLeastTimeUnderTouch;
  std::shared_ptr<velto::VeltoMetrics> metrics;  // while they are collected
};

// velto-client.cpp
ClientValues& valuesOf(VeltoClient* client);
bool runs(VeltoClient* client);
// Installs the library with those values; throws as it does.
void startWith(VeltoClient* client);
// Puts a value that has changed into effect, where the client runs.
void putIntoEffect(VeltoClient* client, guint property);
// velto-client-properties.cpp
void addClientProperties(GObjectClass* klass);

}  // namespace velto_glib
