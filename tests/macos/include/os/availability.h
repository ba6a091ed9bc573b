// GNUstep is of one version.
#define API_AVAILABLE(...)
