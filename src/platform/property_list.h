// What a property list holds beside strings (platform/bundle.h).
#ifndef PLATFORM_PROPERTY_LIST_H_
#define PLATFORM_PROPERTY_LIST_H_

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace platform {

/// The array of strings under `key` of the dictionary in the property list `path`, XML or binary.
/// Nothing where ReadPropertyListString has nothing, and where an element is no string.
std::optional<std::vector<std::string>> ReadPropertyListStrings(const std::string& path,
                                                                const std::string& key);

/// The integer under `key` of the dictionary that stands under `outer_key` of that in the property
/// list `path`. Nothing as above.
std::optional<std::int64_t> ReadPropertyListInteger(const std::string& path,
                                                    const std::string& outer_key,
                                                    const std::string& key);

}  // namespace platform

#endif  // PLATFORM_PROPERTY_LIST_H_
