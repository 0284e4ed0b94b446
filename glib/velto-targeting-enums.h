// What is known of the person in front of the screen, and what a person has allowed.
#pragma once

#include <glib-object.h>

G_BEGIN_DECLS

/**
 * VeltoGender:
 * @VELTO_GENDER_UNKNOWN: not told
 * @VELTO_GENDER_MALE: male
 * @VELTO_GENDER_FEMALE: female
 * @VELTO_GENDER_OTHER: another one
 *
 * The gender of the person who uses the application.
 *
 * Since: 1.0
 */
typedef enum {
  VELTO_GENDER_UNKNOWN,
  VELTO_GENDER_MALE,
  VELTO_GENDER_FEMALE,
  VELTO_GENDER_OTHER,
} VeltoGender;

/**
 * VeltoMarital:
 * @VELTO_MARITAL_UNKNOWN: not told
 * @VELTO_MARITAL_SINGLE: single
 * @VELTO_MARITAL_LIVING_COMMON: living together
 * @VELTO_MARITAL_MARRIED: married
 * @VELTO_MARITAL_DIVORCED: divorced
 * @VELTO_MARITAL_WIDOWED: widowed
 *
 * How the person who uses the application lives.
 *
 * Since: 1.0
 */
typedef enum {
  VELTO_MARITAL_UNKNOWN,
  VELTO_MARITAL_SINGLE,
  VELTO_MARITAL_LIVING_COMMON,
  VELTO_MARITAL_MARRIED,
  VELTO_MARITAL_DIVORCED,
  VELTO_MARITAL_WIDOWED,
} VeltoMarital;

/**
 * VeltoAccess:
 * @VELTO_ACCESS_NOT_DETERMINED: the person has not been asked
 * @VELTO_ACCESS_DENIED: ads may not
 * @VELTO_ACCESS_ALLOWED: ads may
 *
 * What a person has answered to the application's question.
 *
 * Since: 1.0
 */
typedef enum {
  VELTO_ACCESS_NOT_DETERMINED,
  VELTO_ACCESS_DENIED,
  VELTO_ACCESS_ALLOWED,
} VeltoAccess;

/**
 * VeltoForeground:
 * @VELTO_FOREGROUND_AUTO: taken from the windows that have ads
 * @VELTO_FOREGROUND_YES: a person uses the application
 * @VELTO_FOREGROUND_NO: nobody does; nothing is sent that can wait
 *
 * Whether a person uses the application now.
 *
 * Since: 1.0
 */
typedef enum {
  VELTO_FOREGROUND_AUTO,
  VELTO_FOREGROUND_YES,
  VELTO_FOREGROUND_NO,
} VeltoForeground;

G_END_DECLS
