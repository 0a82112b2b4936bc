#include <morvantis/platform/zubplatform.h>

namespace {

constinit zubPlatform platform; // has no state: any object serves

} // namespace

constinit zubPlatform* zub_platform = &platform;
