// Targeting values: a plain holder, read when an ad is asked for.
#include "velto-private.h"

struct _VeltoTargeting {
  GObject parent_instance;
  int year_of_birth;
  int age;
  VeltoGender gender;
  VeltoMarital marital;
  char** keywords;
  char* mediation;
};

/**
 * VeltoTargeting:
 *
 * What an application tells the ad server of the person who uses it, for ads that suit.
 *
 * All of it is optional, and what is not set is not sent. One object may serve many banners and interstitials: each load
 * sends what it holds then.
 *
 * Since: 1.0
 */
G_DEFINE_FINAL_TYPE(VeltoTargeting, velto_targeting, G_TYPE_OBJECT)

enum { PROP_YEAR_OF_BIRTH = 1, PROP_AGE, PROP_GENDER, PROP_MARITAL, PROP_KEYWORDS, PROP_MEDIATION, N_PROPS };
static GParamSpec* properties[N_PROPS];

static void velto_targeting_get_property(GObject* object, guint id, GValue* value, GParamSpec* pspec) {
  auto* self = VELTO_TARGETING(object);
  switch (id) {
    case PROP_YEAR_OF_BIRTH:
      return g_value_set_int(value, self->year_of_birth);
    case PROP_AGE:
      return g_value_set_int(value, self->age);
    case PROP_GENDER:
      return g_value_set_enum(value, self->gender);
    case PROP_MARITAL:
      return g_value_set_enum(value, self->marital);
    case PROP_KEYWORDS:
      return g_value_set_boxed(value, self->keywords);
    case PROP_MEDIATION:
      return g_value_set_string(value, self->mediation);
    default:
      G_OBJECT_WARN_INVALID_PROPERTY_ID(object, id, pspec);
  }
}

static void velto_targeting_set_property(GObject* object, guint id, const GValue* value, GParamSpec* pspec) {
  auto* self = VELTO_TARGETING(object);
  switch (id) {
    case PROP_YEAR_OF_BIRTH:
      return velto_targeting_set_year_of_birth(self, g_value_get_int(value));
    case PROP_AGE:
      return velto_targeting_set_age(self, g_value_get_int(value));
    case PROP_GENDER:
      return velto_targeting_set_gender(self, VeltoGender(g_value_get_enum(value)));
    case PROP_MARITAL:
      return velto_targeting_set_marital(self, VeltoMarital(g_value_get_enum(value)));
    case PROP_KEYWORDS:
      return velto_targeting_set_keywords(self, static_cast<const char* const*>(g_value_get_boxed(value)));
    case PROP_MEDIATION:
      return velto_targeting_set_mediation(self, g_value_get_string(value));
    default:
      G_OBJECT_WARN_INVALID_PROPERTY_ID(object, id, pspec);
  }
}

static void velto_targeting_finalize(GObject* object) {
  auto* self = VELTO_TARGETING(object);
  g_strfreev(self->keywords);
  g_free(self->mediation);
  G_OBJECT_CLASS(velto_targeting_parent_class)->finalize(object);
}

static void velto_targeting_class_init(VeltoTargetingClass* klass) {
  auto* object_class = G_OBJECT_CLASS(klass);
  object_class->get_property = velto_targeting_get_property;
  object_class->set_property = velto_targeting_set_property;
  object_class->finalize = velto_targeting_finalize;
  constexpr auto flags = GParamFlags(G_PARAM_READWRITE | G_PARAM_STATIC_STRINGS | G_PARAM_EXPLICIT_NOTIFY);

  /**
   * VeltoTargeting:year-of-birth: (getter get_year_of_birth) (setter set_year_of_birth)
   *
   * The person's year of birth, such as 1990; 0 when it is not known.
   *
   * Since: 1.0
   */
  properties[PROP_YEAR_OF_BIRTH] = g_param_spec_int("year-of-birth", nullptr, nullptr, 0, G_MAXINT, 0, flags);
  /**
   * VeltoTargeting:age: (getter get_age) (setter set_age)
   *
   * The person's age in years; 0 when it is not known.
   *
   * Since: 1.0
   */
  properties[PROP_AGE] = g_param_spec_int("age", nullptr, nullptr, 0, G_MAXINT, 0, flags);
  /**
   * VeltoTargeting:gender: (getter get_gender) (setter set_gender)
   *
   * The person's gender.
   *
   * Since: 1.0
   */
  properties[PROP_GENDER] =
      g_param_spec_enum("gender", nullptr, nullptr, VELTO_TYPE_GENDER, VELTO_GENDER_UNKNOWN, flags);
  /**
   * VeltoTargeting:marital: (getter get_marital) (setter set_marital)
   *
   * How the person lives.
   *
   * Since: 1.0
   */
  properties[PROP_MARITAL] =
      g_param_spec_enum("marital", nullptr, nullptr, VELTO_TYPE_MARITAL, VELTO_MARITAL_UNKNOWN, flags);
  /**
   * VeltoTargeting:keywords: (getter get_keywords) (setter set_keywords)
   *
   * Words for what the application is about.
   *
   * Since: 1.0
   */
  properties[PROP_KEYWORDS] = g_param_spec_boxed("keywords", nullptr, nullptr, G_TYPE_STRV, flags);
  /**
   * VeltoTargeting:mediation: (getter get_mediation) (setter set_mediation)
   *
   * The name of the mediating platform that the application asks for ads on behalf of.
   *
   * Since: 1.0
   */
  properties[PROP_MEDIATION] = g_param_spec_string("mediation", nullptr, nullptr, nullptr, flags);
  g_object_class_install_properties(object_class, N_PROPS, properties);
}

static void velto_targeting_init(VeltoTargeting*) {}

/**
 * velto_targeting_new:
 *
 * Creates an object that tells nothing yet.
 *
 * Returns: (transfer full): a new targeting object
 *
 * Since: 1.0
 */
VeltoTargeting* velto_targeting_new() {
  velto_return_val_if_elsewhere(nullptr);
  return VELTO_TARGETING(g_object_new(VELTO_TYPE_TARGETING, nullptr));
}

template <class Member, class Value>
static void set(VeltoTargeting* self, Member member, Value value, guint property) {
  if (std::exchange(self->*member, value) != value)
    g_object_notify_by_pspec(G_OBJECT(self), properties[property]);
}

/**
 * velto_targeting_get_year_of_birth: (get-property year-of-birth)
 * @self: a targeting object
 *
 * Gets the person's year of birth.
 *
 * Returns: the year, or 0
 *
 * Since: 1.0
 */
int velto_targeting_get_year_of_birth(VeltoTargeting* self) {
  g_return_val_if_fail(VELTO_IS_TARGETING(self), 0);
  velto_return_val_if_elsewhere(0);
  return self->year_of_birth;
}

/**
 * velto_targeting_set_year_of_birth: (set-property year-of-birth)
 * @self: a targeting object
 * @year_of_birth: the year, or 0
 *
 * Sets the person's year of birth.
 *
 * Since: 1.0
 */
void velto_targeting_set_year_of_birth(VeltoTargeting* self, int year_of_birth) {
  g_return_if_fail(VELTO_IS_TARGETING(self));
  velto_return_if_elsewhere();
  g_return_if_fail(year_of_birth >= 0);
  set(self, &VeltoTargeting::year_of_birth, year_of_birth, PROP_YEAR_OF_BIRTH);
}

/**
 * velto_targeting_get_age: (get-property age)
 * @self: a targeting object
 *
 * Gets the person's age.
 *
 * Returns: the age in years, or 0
 *
 * Since: 1.0
 */
int velto_targeting_get_age(VeltoTargeting* self) {
  g_return_val_if_fail(VELTO_IS_TARGETING(self), 0);
  velto_return_val_if_elsewhere(0);
  return self->age;
}

/**
 * velto_targeting_set_age: (set-property age)
 * @self: a targeting object
 * @age: the age in years, or 0
 *
 * Sets the person's age.
 *
 * Since: 1.0
 */
void velto_targeting_set_age(VeltoTargeting* self, int age) {
  g_return_if_fail(VELTO_IS_TARGETING(self));
  velto_return_if_elsewhere();
  g_return_if_fail(age >= 0);
  set(self, &VeltoTargeting::age, age, PROP_AGE);
}

/**
 * velto_targeting_get_gender: (get-property gender)
 * @self: a targeting object
 *
 * Gets the person's gender.
 *
 * Returns: the gender
 *
 * Since: 1.0
 */
VeltoGender velto_targeting_get_gender(VeltoTargeting* self) {
  g_return_val_if_fail(VELTO_IS_TARGETING(self), VELTO_GENDER_UNKNOWN);
  velto_return_val_if_elsewhere(VELTO_GENDER_UNKNOWN);
  return self->gender;
}

/**
 * velto_targeting_set_gender: (set-property gender)
 * @self: a targeting object
 * @gender: the gender
 *
 * Sets the person's gender.
 *
 * Since: 1.0
 */
void velto_targeting_set_gender(VeltoTargeting* self, VeltoGender gender) {
  g_return_if_fail(VELTO_IS_TARGETING(self));
  velto_return_if_elsewhere();
  if (!velto_glib::isValueOf(VELTO_TYPE_GENDER, gender, __func__)) return;
  set(self, &VeltoTargeting::gender, gender, PROP_GENDER);
}

/**
 * velto_targeting_get_marital: (get-property marital)
 * @self: a targeting object
 *
 * Gets how the person lives.
 *
 * Returns: the way of living
 *
 * Since: 1.0
 */
VeltoMarital velto_targeting_get_marital(VeltoTargeting* self) {
  g_return_val_if_fail(VELTO_IS_TARGETING(self), VELTO_MARITAL_UNKNOWN);
  velto_return_val_if_elsewhere(VELTO_MARITAL_UNKNOWN);
  return self->marital;
}

/**
 * velto_targeting_set_marital: (set-property marital)
 * @self: a targeting object
 * @marital: the way of living
 *
 * Sets how the person lives.
 *
 * Since: 1.0
 */
void velto_targeting_set_marital(VeltoTargeting* self, VeltoMarital marital) {
  g_return_if_fail(VELTO_IS_TARGETING(self));
  velto_return_if_elsewhere();
  if (!velto_glib::isValueOf(VELTO_TYPE_MARITAL, marital, __func__)) return;
  set(self, &VeltoTargeting::marital, marital, PROP_MARITAL);
}

/**
 * velto_targeting_get_keywords: (get-property keywords)
 * @self: a targeting object
 *
 * Gets the words for what the application is about.
 *
 * Returns: (nullable) (transfer none) (array zero-terminated=1): the words
 *
 * Since: 1.0
 */
const char* const* velto_targeting_get_keywords(VeltoTargeting* self) {
  g_return_val_if_fail(VELTO_IS_TARGETING(self), nullptr);
  velto_return_val_if_elsewhere(nullptr);
  return self->keywords;
}

/**
 * velto_targeting_set_keywords: (set-property keywords)
 * @self: a targeting object
 * @keywords: (nullable) (array zero-terminated=1): the words
 *
 * Sets words for what the application is about.
 *
 * Since: 1.0
 */
void velto_targeting_set_keywords(VeltoTargeting* self, const char* const* keywords) {
  g_return_if_fail(VELTO_IS_TARGETING(self));
  velto_return_if_elsewhere();
  if (self->keywords == keywords) return;
  if (self->keywords && keywords && g_strv_equal(self->keywords, keywords)) return;
  auto** before = std::exchange(self->keywords, g_strdupv(const_cast<char**>(keywords)));
  g_strfreev(before);
  g_object_notify_by_pspec(G_OBJECT(self), properties[PROP_KEYWORDS]);
}

/**
 * velto_targeting_get_mediation: (get-property mediation)
 * @self: a targeting object
 *
 * Gets the name of the mediating platform.
 *
 * Returns: (nullable) (transfer none): the name
 *
 * Since: 1.0
 */
const char* velto_targeting_get_mediation(VeltoTargeting* self) {
  g_return_val_if_fail(VELTO_IS_TARGETING(self), nullptr);
  velto_return_val_if_elsewhere(nullptr);
  return self->mediation;
}

/**
 * velto_targeting_set_mediation: (set-property mediation)
 * @self: a targeting object
 * @mediation: (nullable): the name
 *
 * Sets the name of the mediating platform.
 *
 * Since: 1.0
 */
void velto_targeting_set_mediation(VeltoTargeting* self, const char* mediation) {
  g_return_if_fail(VELTO_IS_TARGETING(self));
  velto_return_if_elsewhere();
  if (g_strcmp0(self->mediation, mediation) == 0) return;
  g_free(std::exchange(self->mediation, g_strdup(mediation)));
  g_object_notify_by_pspec(G_OBJECT(self), properties[PROP_MEDIATION]);
}

namespace velto_glib {

// The enumerations differ by one: there the first value stands for nothing.
velto::VeltoSettings settingsFrom(VeltoTargeting* targeting) {
  velto::VeltoSettings settings;
  if (!targeting) return settings;
  if (targeting->year_of_birth) settings.yearOfBirth = targeting->year_of_birth;
  if (targeting->age) settings.age = targeting->age;
  if (targeting->gender) settings.gender = targeting->gender - 1;
  if (targeting->marital) settings.marital = targeting->marital - 1;
  if (targeting->mediation) settings.mediation = targeting->mediation;
  if (!targeting->keywords) return settings;
  settings.keywords.emplace();
  for (char** word = targeting->keywords; *word; ++word) settings.keywords->push_back(*word);
  return settings;
}

}  // namespace velto_glib
