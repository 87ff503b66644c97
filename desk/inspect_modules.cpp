#include "desk/inspect_modules.h"

#include <limits>
#include <map>

#include "desk/abi_note.h"
#include "desk/module_probe.h"

namespace fs = std::filesystem;

namespace panelry::desk
{

namespace
{

constexpr char kExtension[] = ".so";

class ModuleInspection
{
public:
    ModuleInspection(fs::path hostDirectory, std::string_view ownAbi)
        : m_hostDirectory(std::move(hostDirectory)), m_ownAbi(ownAbi)
    {
    }

    void Look(const fs::directory_entry& entry)
    {
        m_subject = entry.path().filename().string();
        std::error_code error;
        const fs::file_status status = entry.status(error);
        if (error && status.type() != fs::file_type::not_found) {
            Add("fatal", "can't be looked at (" + error.message() + "): ends the host", true);
        } else if (fs::is_directory(status)) {
            Add("skipped", "is a directory", false);
        } else if (entry.path().extension() != kExtension) {
            Add("skipped", "doesn't end in \".so\"", IsElf(entry.path()));
        } else if (!fs::exists(status)) {
            Add("skipped", "is a link that leads nowhere", true);
        } else {
            LookAtLibrary(entry.path());
        }
    }

    std::vector<Finding> TakeFindings() { return std::move(m_findings); }

private:
    void LookAtLibrary(const fs::path& path)
    {
        const std::optional<std::string> abi = ReadAbiNote(path);
        const std::string difference = abi ? AbiDifference(*abi, m_ownAbi) : "";
        const ModuleProbe probe = ProbeModule(path, m_hostDirectory, difference.empty());
        if (!probe.fatal.empty()) {
            Add("fatal", probe.fatal, true);
        } else if (!probe.skipped.empty()) {
            Add("skipped", probe.skipped, true);
        }
        for (const Offer& offer : probe.offers) {
            LookAtOffer(offer);
        }
        if (!probe.missing.empty()) {
            Add("warning", "ends the host when it calls what is missing: " + probe.missing, true);
        }
        if (!difference.empty()) {
            Add("warning",
                "is loaded although it was built for something else, so it wasn't asked what it offers: " +
                    difference,
                true);
        } else if (!abi && probe.skipped.empty() && probe.fatal.empty()) {
            Add("warning", "doesn't say what it was built for (panelry_add_module() sees to that)", true);
        }
    }

    void LookAtOffer(const Offer& offer)
    {
        const std::string module = std::to_string(offer.id) + " \"" + offer.title + '"';
        const auto [first, isNew] = m_firstLibrary.emplace(offer.id, m_subject);
        if (!isNew) {
            Add("ignored", module + ": offered by " + first->second + " before", true);
        } else if (offer.id > static_cast<std::uint32_t>(std::numeric_limits<std::int32_t>::max())) {
            Add("warning",
                module + ": the id is negative to the host, so no message can be meant for it alone", true);
        } else {
            Add("taken", module, false);
        }
    }

    void Add(const char* verdict, std::string text, bool isFault)
    {
        m_findings.push_back({m_subject, verdict, std::move(text), isFault});
    }

    const fs::path m_hostDirectory;
    const std::string m_ownAbi;
    std::string m_subject;
    std::map<std::uint32_t, std::string> m_firstLibrary;  // by module id
    std::vector<Finding> m_findings;
};

}  // namespace

std::vector<Finding> InspectModules(const fs::path& directory, const fs::path& hostDirectory,
                                    std::string_view ownAbi)
{
    std::error_code error;
    const fs::file_status status = fs::status(directory, error);
    if (!fs::exists(status)) {
        return {{directory.filename().string(), "missing",
                 "there is no such directory, so there are no modules", true}};
    }
    fs::directory_iterator entry(directory, error);
    if (error) {
        return {{directory.filename().string(), "fatal",
                 "can't be read as a directory (" + error.message() + "): ends the host", true}};
    }
    ModuleInspection inspection(hostDirectory, ownAbi);
    for (; !error && entry != fs::directory_iterator(); entry.increment(error)) {
        inspection.Look(*entry);
    }
    return inspection.TakeFindings();
}

}  // namespace panelry::desk
