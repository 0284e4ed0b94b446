// How a client's values are read and set, by property. What has not changed is not told; what cannot be done, on this
// thread, with this value or any more, is refused with a word why.
#pragma once

#include "velto-client-private.h"

namespace velto_glib {

const char* clientText(VeltoClient* client, guint property, const char* function);
int clientNumber(VeltoClient* client, guint property, const char* function);
void setClientText(VeltoClient* client, guint property, const char* text, const char* function);
void setClientNumber(VeltoClient* client, guint property, int number, const char* function);

bool mayChange(VeltoClient* client, guint property, const char* function);
void changed(VeltoClient* client, guint property);

}  // namespace velto_glib
