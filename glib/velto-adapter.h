// Another ad network, as an application brings it along.
#pragma once

#include <glib-object.h>

#include "velto-adapter-ad.h"
#include "velto-adapter-request.h"
#include "velto-visibility.h"

G_BEGIN_DECLS

#define VELTO_TYPE_ADAPTER (velto_adapter_get_type())
VELTO_PUBLIC G_DECLARE_INTERFACE(VeltoAdapter, velto_adapter, VELTO, ADAPTER, GObject)

/**
 * VeltoAdapterInterface:
 * @parent_iface: the parent interface
 * @get_adapter_description: what the network is called, for logs; may be left out
 * @load: asks the network for an ad
 * @present: tells that a full-screen ad covers its window now; may be left out
 *
 * What an adapter implements.
 *
 * Since: 1.0
 */
struct _VeltoAdapterInterface {
  GTypeInterface parent_iface;

  /**
   * VeltoAdapterInterface::get_adapter_description:
   * @self: an adapter
   *
   * Says what the network is called, for logs.
   *
   * Returns: (transfer full) (nullable): a few words
   *
   * Since: 1.0
   */
  char* (*get_adapter_description)(VeltoAdapter* self);

  /**
   * VeltoAdapterInterface::load:
   * @self: an adapter
   * @request: what is wanted, and the way to answer
   *
   * Asks the network for an ad. The answer may come at once or later, by [method@Velto.AdapterRequest.answer] or
   * [method@Velto.AdapterRequest.fail]. A request that is let go of has failed.
   *
   * Since: 1.0
   */
  void (*load)(VeltoAdapter* self, VeltoAdapterRequest* request);

  /**
   * VeltoAdapterInterface::present:
   * @self: an adapter
   * @ad: a full-screen ad of this adapter
   *
   * Tells that the ad covers its window now.
   *
   * Since: 1.0
   */
  void (*present)(VeltoAdapter* self, VeltoAdapterAd* ad);
};

VELTO_PUBLIC char* velto_adapter_get_adapter_description(VeltoAdapter* self);
VELTO_PUBLIC void velto_adapter_load(VeltoAdapter* self, VeltoAdapterRequest* request);
VELTO_PUBLIC void velto_adapter_present(VeltoAdapter* self, VeltoAdapterAd* ad);

G_END_DECLS
