// What the server calls the parameters of a request.
#pragma once

namespace velto {

// Query items.
inline constexpr char constParamTimestamp[] = "ts";
inline constexpr char constParamVeltoKey[] = "k";
inline constexpr char constParamTest[] = "test";
inline constexpr char constParamBannerType[] = "at";
inline constexpr char constParamBannerSize[] = "fsz";
inline constexpr char constParamTrackId[] = "id";

// The library.
inline constexpr char constParamSDKType[] = "sdkt";
inline constexpr char constParamSDKVersion[] = "sdkv";
inline constexpr char constParamMRAID[] = "mraid";
inline constexpr char constParamOMSDK[] = "omsdk";
inline constexpr char constParamGoogleAdapter[] = "gadapt";

// Identifiers.
inline constexpr char constParamIDFA[] = "aid";
inline constexpr char constParamVeltoID[] = "aida";
inline constexpr char constParamTrackLimited[] = "aidl";

// The device. Each of the carrier's values travels under a "sim" and a "network" name.
inline constexpr char constParamDeviceManufacturerName[] = "dmn";
inline constexpr char constParamDeviceModel[] = "dmo";
inline constexpr char constParamDeviceName[] = "dmp";
inline constexpr char constParamDeviceOS[] = "dos";
inline constexpr char constParamDeviceOSVersion[] = "dov";
inline constexpr char constParamDeviceScreenWidth[] = "dsw";
inline constexpr char constParamDeviceScreenHeight[] = "dsh";
inline constexpr char constParamDeviceScreenDensity[] = "dsd";
inline constexpr char constParamDeviceUserAgent[] = "dua";
inline constexpr char constParamDeviceLanguage[] = "dln";
inline constexpr char constParamDeviceConnection[] = "dct";
inline constexpr char constParamDeviceConnectionType[] = "dctd";
inline constexpr char constParamDeviceSimOperatoreCode[] = "soc";
inline constexpr char constParamDeviceNetworkOperatorCode[] = "noc";
inline constexpr char constParamDeviceSimOperatoreName[] = "son";
inline constexpr char constParamDeviceNetworkOperatorName[] = "non";
inline constexpr char constParamDeviceNetworkOperatorCountry[] = "ncc";
inline constexpr char constParamDeviceSimOperatorCountry[] = "scc";

// The host application.
inline constexpr char constParamAppLanguage[] = "aln";
inline constexpr char constParamAppBundleID[] = "ab";
inline constexpr char constParamAppName[] = "an";

// The place.
inline constexpr char constParamGeoCoordinate[] = "geo";
inline constexpr char constParamGeoAccuracy[] = "ga";
inline constexpr char constParamGeoLastUpdated[] = "gf";
inline constexpr char constParamGeoTimezone[] = "gz";

// Targeting.
inline constexpr char constParamMediator[] = "mediator";
inline constexpr char constParamKeywords[] = "okw";
inline constexpr char constParamUserYearOfBirth[] = "oyob";
inline constexpr char constParamUserAge[] = "oage";
inline constexpr char constParamUserGender[] = "ogender";
inline constexpr char constParamUserMarital[] = "omarital";

// Privacy.
inline constexpr char constParamGDPR[] = "gdpr_opt";
inline constexpr char constParamGDPRConsent[] = "gdpr_consent";
inline constexpr char constParamGDPRDC[] = "gdpr_dc";
inline constexpr char constParamPrivacy[] = "us_privacy";

// Requests for video ads, all of them query items. Some things have another name there than above.
inline constexpr char constParamVeltoKeyVAST[] = "key";
inline constexpr char constParamOperatingSystem[] = "os";
inline constexpr char constParamOSVersion[] = "ov";
inline constexpr char constParamDeviceIp[] = "ip";
inline constexpr char constParamTrafficSource[] = "source";
inline constexpr char constParamVideoPosition[] = "vpos";
inline constexpr char constParamVideoWidth[] = "vw";
inline constexpr char constParamVideoHeight[] = "vh";
inline constexpr char constParamVideoMinDuration[] = "vmin";
inline constexpr char constParamVideoMaxDuration[] = "vmax";
inline constexpr char constParamVideoFormat[] = "vfmt";
inline constexpr char constParamVASTVersion[] = "vvers";
inline constexpr char constParamVASTPlayback[] = "vplay";
inline constexpr char constParamVPAID[] = "vpaid";
inline constexpr char constParamVPAIDVersion[] = "vapi";
inline constexpr char constParamOMSDKIdentifier[] = "omidpn";
inline constexpr char constParamOMSDKVersion[] = "omidpv";
inline constexpr char constParamAppStoreUrl[] = "url";
inline constexpr char constParamAppCategory[] = "acat";
inline constexpr char constParamCacheBusting[] = "cb";
inline constexpr char constParamSecure[] = "secure";
inline constexpr char constParamGdprOptin[] = "gdpr_optin";
inline constexpr char constParamCOPPA[] = "coppa";
inline constexpr char constParamUserAgent[] = "ua";
inline constexpr char constParamLatitude[] = "lat";
inline constexpr char constParamLongitude[] = "lon";
inline constexpr char constParamDeviceBrand[] = "mn";
inline constexpr char constParamDeviceModelVAST[] = "mo";
inline constexpr char constParamDeviceWidth[] = "dw";
inline constexpr char constParamDeviceHeight[] = "dh";
inline constexpr char constParamDeviceDensity[] = "dd";
inline constexpr char constParamDeviceLanguageVAST[] = "ln";
inline constexpr char constParamDeviceConnectionTypeVAST[] = "ct";
inline constexpr char constParamCountryCode[] = "cc";

}  // namespace velto
