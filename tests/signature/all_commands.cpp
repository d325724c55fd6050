// All that calls the client library, to be compiled at once.
#include "commands/commands.cpp"      // NOLINT(bugprone-suspicious-include)
#include "commands/hashes.cpp"        // NOLINT(bugprone-suspicious-include)
#include "commands/publish_scan.cpp"  // NOLINT(bugprone-suspicious-include)
#include "commands/sorted_sets.cpp"   // NOLINT(bugprone-suspicious-include)
