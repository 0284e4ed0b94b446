// What users of a shared library can link with: everything that public headers declare and that is not inline bears this
// mark, interfaces too, so that a type is one type on both sides. The rest stays inside.
#pragma once

#define VELTO_EXPORT [[gnu::visibility("default")]]
