// For the check of the ABI: what applications are compiled with and no function of the library takes or gives.
#include <velto-glib.h>

void velto_types(const VeltoAdapterInterface* adapter, VeltoAdError ad, VeltoClientError client);
void velto_types(const VeltoAdapterInterface* adapter, VeltoAdError ad, VeltoClientError client) {
  (void)adapter, (void)ad, (void)client;
}
