// What an application may tell the ad server of the person who uses it.
#pragma once

#include <glib-object.h>

#include "velto-targeting-enums.h"
#include "velto-visibility.h"

G_BEGIN_DECLS

#define VELTO_TYPE_TARGETING (velto_targeting_get_type())
VELTO_PUBLIC G_DECLARE_FINAL_TYPE(VeltoTargeting, velto_targeting, VELTO, TARGETING, GObject)

VELTO_PUBLIC VeltoTargeting* velto_targeting_new(void);

VELTO_PUBLIC int velto_targeting_get_year_of_birth(VeltoTargeting* self);
VELTO_PUBLIC void velto_targeting_set_year_of_birth(VeltoTargeting* self, int year_of_birth);
VELTO_PUBLIC int velto_targeting_get_age(VeltoTargeting* self);
VELTO_PUBLIC void velto_targeting_set_age(VeltoTargeting* self, int age);
VELTO_PUBLIC VeltoGender velto_targeting_get_gender(VeltoTargeting* self);
VELTO_PUBLIC void velto_targeting_set_gender(VeltoTargeting* self, VeltoGender gender);
VELTO_PUBLIC VeltoMarital velto_targeting_get_marital(VeltoTargeting* self);
VELTO_PUBLIC void velto_targeting_set_marital(VeltoTargeting* self, VeltoMarital marital);
VELTO_PUBLIC const char* const* velto_targeting_get_keywords(VeltoTargeting* self);
VELTO_PUBLIC void velto_targeting_set_keywords(VeltoTargeting* self, const char* const* keywords);
VELTO_PUBLIC const char* velto_targeting_get_mediation(VeltoTargeting* self);
VELTO_PUBLIC void velto_targeting_set_mediation(VeltoTargeting* self, const char* mediation);

G_END_DECLS
