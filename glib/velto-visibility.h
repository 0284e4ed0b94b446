// What the library shows of itself.
#pragma once

#ifndef VELTO_PUBLIC
#define VELTO_PUBLIC __attribute__((visibility("default"))) extern
#endif
