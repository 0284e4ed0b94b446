// The application as the ad server sees it: who publishes, what the person has consented to, where the servers are.
#pragma once

#include <gio/gio.h>

#include "velto-adapter.h"
#include "velto-targeting-enums.h"
#include "velto-visibility.h"

G_BEGIN_DECLS

#define VELTO_TYPE_CLIENT (velto_client_get_type())
VELTO_PUBLIC G_DECLARE_FINAL_TYPE(VeltoClient, velto_client, VELTO, CLIENT, GObject)

VELTO_PUBLIC VeltoClient* velto_client_new(const char* application_id);
VELTO_PUBLIC VeltoClient* velto_client_new_from_key_file(GKeyFile* key_file, GError** error);
VELTO_PUBLIC VeltoClient* velto_client_get_default(void);
VELTO_PUBLIC gboolean velto_client_start(VeltoClient* self, GError** error);
VELTO_PUBLIC void velto_client_add_adapter(VeltoClient* self, const char* name, VeltoAdapter* adapter);

VELTO_PUBLIC const char* velto_client_get_version(VeltoClient* self);
VELTO_PUBLIC const char* velto_client_get_application_id(VeltoClient* self);
VELTO_PUBLIC void velto_client_set_application_id(VeltoClient* self, const char* application_id);
VELTO_PUBLIC const char* velto_client_get_application_name(VeltoClient* self);
VELTO_PUBLIC void velto_client_set_application_name(VeltoClient* self, const char* application_name);
VELTO_PUBLIC const char* velto_client_get_publisher_key(VeltoClient* self);
VELTO_PUBLIC void velto_client_set_publisher_key(VeltoClient* self, const char* publisher_key);
VELTO_PUBLIC gboolean velto_client_get_test_mode(VeltoClient* self);
VELTO_PUBLIC void velto_client_set_test_mode(VeltoClient* self, gboolean test_mode);
VELTO_PUBLIC const char* velto_client_get_endpoint(VeltoClient* self);
VELTO_PUBLIC void velto_client_set_endpoint(VeltoClient* self, const char* endpoint);

VELTO_PUBLIC gboolean velto_client_get_personal_info_allowed(VeltoClient* self);
VELTO_PUBLIC void velto_client_set_personal_info_allowed(VeltoClient* self, gboolean allowed);
VELTO_PUBLIC const char* velto_client_get_gdpr_consent(VeltoClient* self);
VELTO_PUBLIC void velto_client_set_gdpr_consent(VeltoClient* self, const char* gdpr_consent);
VELTO_PUBLIC const char* velto_client_get_us_privacy(VeltoClient* self);
VELTO_PUBLIC void velto_client_set_us_privacy(VeltoClient* self, const char* us_privacy);

VELTO_PUBLIC const char* velto_client_get_ad_server(VeltoClient* self);
VELTO_PUBLIC void velto_client_set_ad_server(VeltoClient* self, const char* ad_server);
VELTO_PUBLIC const char* velto_client_get_publisher_server(VeltoClient* self);
VELTO_PUBLIC void velto_client_set_publisher_server(VeltoClient* self, const char* publisher_server);
VELTO_PUBLIC const char* velto_client_get_tracking_server(VeltoClient* self);
VELTO_PUBLIC void velto_client_set_tracking_server(VeltoClient* self, const char* tracking_server);
VELTO_PUBLIC GFile* velto_client_get_ca_file(VeltoClient* self);
VELTO_PUBLIC void velto_client_set_ca_file(VeltoClient* self, GFile* ca_file);
VELTO_PUBLIC GVariant* velto_client_get_host_map(VeltoClient* self);
VELTO_PUBLIC void velto_client_set_host_map(VeltoClient* self, GVariant* host_map);
VELTO_PUBLIC guint velto_client_get_request_timeout(VeltoClient* self);
VELTO_PUBLIC void velto_client_set_request_timeout(VeltoClient* self, guint seconds);
VELTO_PUBLIC guint velto_client_get_least_time_under_touch(VeltoClient* self);
VELTO_PUBLIC void velto_client_set_least_time_under_touch(VeltoClient* self, guint milliseconds);
VELTO_PUBLIC gboolean velto_client_get_local_network_allowed(VeltoClient* self);
VELTO_PUBLIC void velto_client_set_local_network_allowed(VeltoClient* self, gboolean allowed);

VELTO_PUBLIC gboolean velto_client_get_collect_metrics(VeltoClient* self);
VELTO_PUBLIC void velto_client_set_collect_metrics(VeltoClient* self, gboolean collect_metrics);
VELTO_PUBLIC char* velto_client_dup_metrics(VeltoClient* self);

VELTO_PUBLIC VeltoAccess velto_client_get_calendar_access(VeltoClient* self);
VELTO_PUBLIC void velto_client_set_calendar_access(VeltoClient* self, VeltoAccess access);
VELTO_PUBLIC VeltoAccess velto_client_get_pictures_access(VeltoClient* self);
VELTO_PUBLIC void velto_client_set_pictures_access(VeltoClient* self, VeltoAccess access);
VELTO_PUBLIC VeltoForeground velto_client_get_in_foreground(VeltoClient* self);
VELTO_PUBLIC void velto_client_set_in_foreground(VeltoClient* self, VeltoForeground in_foreground);

G_END_DECLS
