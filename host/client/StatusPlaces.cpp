#include "client/StatusPlaces.h"

#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <memory>

#include "base/Error.h"
#include "base/File.h"
#include "base/Text.h"

namespace board {

namespace {

std::string variable(const char* name) {
    const char* const value = std::getenv(name);
    return value ? value : "";
}

/// A name of limited length that differs for different paths: "board-" and a hash (FNV-1a).
std::string nameFor(const std::string& path) {
    std::uint64_t hash = 0xcbf29ce484222325;
    for (const char c : path)
        hash = (hash ^ static_cast<unsigned char>(c)) * 0x100000001b3;
    char name[32];
    std::snprintf(name, sizeof name, "board-%016llx", static_cast<unsigned long long>(hash));
    return name;
}

} // namespace

std::string serviceFolder() {
    const std::string folders = variable("RUNTIME_DIRECTORY");
    return folders.substr(0, folders.find(':'));
}

std::string reportedProfile(const std::string& profile) {
    const std::unique_ptr<char, decltype(&std::free)> path(::realpath(profile.c_str(), nullptr),
                                                           std::free);
    if (!path)
        failWith(profile, "can't find the file", errno);
    return path.get();
}

std::vector<std::string> statusPlaces(const std::string& profile, bool isSimulated) {
    const std::string path = reportedProfile(profile);
    std::vector<std::string> places;
    const std::string ofService = serviceFolder();
    if (!ofService.empty())
        places.push_back(ofService + "/host");
    if (isSimulated)
        places.push_back(folderOf(path) + "host.socket");
    const std::string ofUser = variable("XDG_RUNTIME_DIR");
    if (!ofUser.empty())
        places.push_back(ofUser + "/boarddrivers/" + nameFor(path) + ".socket");
    places.emplace_back("/run/boarddrivers/host");
    return places;
}

} // namespace board
