// For the check of the ABI: what applications are compiled with and no function of the library takes or gives.
#include <velto-glib.h>

void velto_types(const VeltoAdapterInterface* adapter, VeltoAdError ad, VeltoClientError client,
                 VeltoVideoAdError video_ad, VeltoVideoAdPosition position, VeltoVideoAdQuartile quartile);
void velto_types(const VeltoAdapterInterface* adapter, VeltoAdError ad, VeltoClientError client,
                 VeltoVideoAdError video_ad, VeltoVideoAdPosition position, VeltoVideoAdQuartile quartile) {
  (void)adapter, (void)ad, (void)client, (void)video_ad, (void)position, (void)quartile;
}
