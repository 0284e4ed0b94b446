// Uses the GObject library. The install test compiles, links and runs it.
#include <velto-glib.h>

int main() {
  g_autoptr(VeltoClient) client = velto_client_new("org.example.consumer");
  return *velto_client_get_version(client) ? 0 : 1;
}
