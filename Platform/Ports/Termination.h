#pragma once

namespace NS {

// Has SIGINT, SIGTERM, SIGHUP, and SIGABRT after an uncaught exception, take the names that this
// process registered with them, before they end it as they always do. exit() does so without being
// asked. Call once, from main().
void removeNamesOnTermination();

} // namespace NS
