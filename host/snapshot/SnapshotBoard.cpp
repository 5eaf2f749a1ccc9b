#include "snapshot/SnapshotBoard.h"

#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <functional>
#include <map>
#include <set>
#include <sstream>
#include <utility>

#include "base/Error.h"
#include "base/File.h"
#include "base/Text.h"
#include "descriptor/TagWords.h"
#include "leds/LedTable.h"
#include "profile/Toml.h"

using nlohmann::ordered_json;
namespace fs = std::filesystem;

namespace board {

namespace {

constexpr std::size_t MOST_PROFILE = std::size_t{1} << 20U;

bool isPlainText(const std::string& bytes) {
    return std::all_of(bytes.begin(), bytes.end(), [](char byte) {
        return byte == '\n' || byte == '\t' || (byte >= ' ' && byte <= '~');
    });
}

std::string hexOf(const std::string& bytes) {
    constexpr char DIGITS[] = "0123456789abcdef";
    std::string text;
    for (const char byte : bytes) {
        const auto value = static_cast<unsigned char>(byte);
        text += DIGITS[value / 16U];
        text += DIGITS[value % 16U];
    }
    return text;
}

/// The content of a snapshot, checked.
class Source {
public:
    Source(const std::string& text, std::string name) : m_name(std::move(name)) {
        const ordered_json json = ordered_json::parse(text, nullptr, false);
        if (json.is_discarded())
            fail("is not JSON");
        if (member(json, "snapshot") != SNAPSHOT_VERSION)
            throw Error(m_name + ": is a snapshot of another version (expected " +
                        std::to_string(SNAPSHOT_VERSION) + ")");
        m_profile = textOf(member(member(json, "profile"), "text"), "profile.text");
        const ordered_json& files = member(json, "files");
        if (!files.is_array())
            fail("\"files\" is not an array");
        for (const ordered_json& file : files)
            add(file);
    }

    const std::string& profile() const { return m_profile; }

    /// What the file of this entry held; null if it could not be read.
    const std::string* contentOf(const std::string& key) const {
        const auto found = m_contents.find(key);
        return found == m_contents.end() ? nullptr : &found->second;
    }

    [[noreturn]] void fail(const std::string& what) const {
        throw Error(m_name + ": " + what + " (expected a snapshot, as 'boardctl snapshot' writes)");
    }

private:
    void add(const ordered_json& file) {
        const std::string key = textOf(member(file, "key"), "key");
        if (file.contains("text")) {
            m_contents[key] = textOf(file["text"], key);
        } else if (file.contains("hex")) {
            std::string bytes;
            if (decodeHex(textOf(file["hex"], key), bytes) != std::string::npos)
                fail("\"hex\" of " + key + " is not hexadecimal");
            m_contents[key] = bytes;
        }
    }

    const ordered_json& member(const ordered_json& object, const char* key) const {
        if (!object.is_object() || !object.contains(key))
            fail(std::string("has no \"") + key + "\"");
        return object[key];
    }

    std::string textOf(const ordered_json& value, const std::string& what) const {
        if (!value.is_string())
            fail("\"" + what + "\" is not a text");
        return value.get<std::string>();
    }

    const std::string m_name;
    std::string m_profile;
    std::map<std::string, std::string> m_contents;
};

/// Changes the profile so that it names files of the simulated board, and makes those files.
class Rewriter {
public:
    Rewriter(fs::path root, const Source& source) : m_root(std::move(root)), m_source(source) {}

    void rewrite(toml::table& profile) {
        makeFolder(m_root / "dev");
        profile.insert_or_assign("simulated", true);
        for (const char* const kind : {"fan", "thermal", "power", "led"})
            for (const char* const key : {"device", "enable", "tach"})
                eachOf(profile, kind, [&](toml::table& entry, std::size_t index) {
                    const std::string file = "dev/" + std::string(kind) + std::to_string(index);
                    const bool isDevice = std::string(key) == "device";
                    move(entry, key, kind + ("[" + std::to_string(index) + "]"),
                         isDevice ? file : file + "-" + key);
                });
        moveIn(profile, "descriptor", "device", "eeprom.bin");
        moveIn(profile, "preferences", "file", "preferences");
        moveIn(profile, "firmware", "info", "image-info");
        if (toml::table* const button = profile["button"].as_table()) {
            makePipe("dev/button");
            button->insert_or_assign("device", "dev/button");
        }
        if (toml::table* const leds = profile["leds"].as_table()) {
            makeFolder(m_root / "leds");
            leds->erase("group"); // this machine may not have that group
            eachOf(*leds, "file",
                   [&](toml::table& entry, std::size_t index) { moveLed(entry, index); });
        }
    }

private:
    static void eachOf(toml::table& table, const char* key,
                       const std::function<void(toml::table&, std::size_t)>& use) {
        if (toml::array* const entries = table[key].as_array())
            for (std::size_t i = 0; i < entries->size(); ++i)
                use(*entries->get(i)->as_table(), i);
    }

    void moveIn(toml::table& profile, const char* section, const char* key, const char* file) {
        if (toml::table* const entry = profile[section].as_table())
            move(*entry, key, section, file);
    }

    void move(toml::table& entry, const char* key, const std::string& section,
              const std::string& file) {
        if (!entry.contains(key))
            return;
        entry.insert_or_assign(key, file);
        if (const std::string* const content = m_source.contentOf(section + "." + key))
            writeFile((m_root / file).string(), *content);
    }

    void moveLed(toml::table& entry, std::size_t index) {
        std::string name = ledNameOf(entry["path"].value_or(std::string()));
        if (name.empty() || name == "." || name == ".." || name.find('/') != std::string::npos)
            name = "led" + std::to_string(index);
        for (std::size_t number = index; !takeLedName(name); ++number)
            name = "led" + std::to_string(number);
        const std::string* const state =
            m_source.contentOf("leds.file[" + std::to_string(index) + "].path");
        if (state) { // otherwise the LED is missing, as on the board
            makePipe("leds/" + name);
            const std::size_t end = state->find_first_not_of("0123456789");
            writeFile((m_root / "leds" / (name + ".state")).string(), state->substr(0, end));
        }
        entry.insert_or_assign("path", "leds/" + name);
    }

    /// Reserves the names of the LED's two files. False if another LED has one of these names.
    bool takeLedName(const std::string& name) {
        const std::string state = name + ".state";
        if (m_ledFiles.count(name) != 0 || m_ledFiles.count(state) != 0)
            return false;
        m_ledFiles.insert({name, state});
        return true;
    }

    void makePipe(const std::string& file) const {
        if (!tryMakePipe((m_root / file).string(), 0666))
            failWith((m_root / file).string(), "can't make the pipe", errno);
    }

    const fs::path m_root;
    const Source& m_source;
    std::set<std::string> m_ledFiles;
};

} // namespace

ordered_json toJson(const std::string& profilePath, const std::vector<SnapshotFile>& files) {
    ordered_json list = ordered_json::array();
    for (const SnapshotFile& file : files) {
        ordered_json entry = {{"key", file.key}, {"path", file.path}};
        if (!file.content)
            entry["error"] = file.content.fault();
        else if (isPlainText(*file.content))
            entry["text"] = *file.content;
        else
            entry["hex"] = hexOf(*file.content);
        list.push_back(std::move(entry));
    }
    return {{"profile", {{"path", profilePath}, {"text", readFile(profilePath, MOST_PROFILE)}}},
            {"files", std::move(list)}};
}

SimulatedBoard createFromSnapshot(const std::string& directory, const std::string& text,
                                  const std::string& name) {
    const Source source(text, name);
    return SimulatedBoard::create(directory, [&](const std::string& root) {
        const std::string path = (fs::path(root) / "board.toml").string();
        writeFile(path, source.profile());
        try {
            static_cast<void>(Profile::load(path)); // so Rewriter finds the types it expects
        } catch (const Error& error) {
            throw Error(name + ": its profile: " + error.what());
        }
        toml::table profile = toml::parse(source.profile());
        Rewriter(root, source).rewrite(profile);
        std::ostringstream content;
        content << "# Made from " << printable(name) << ". Paths are relative to this file.\n"
                << profile << "\n";
        writeFile(path, content.str());
    });
}

} // namespace board
