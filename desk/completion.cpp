#include "desk/completion.h"

#include "desk/commands.h"
#include "desk/providers/faults.h"
#include "desk/providers/host_words.h"
#include "desk/providers/scenarios.h"

namespace panelry::desk
{

namespace
{

std::vector<std::string_view> Words(std::string_view line)
{
    std::vector<std::string_view> words;
    while (true) {
        line.remove_prefix(std::min(line.find_first_not_of(" \t"), line.size()));
        const std::size_t end = line.find_first_of(" \t");
        words.push_back(line.substr(0, end));
        if (end == std::string_view::npos) {
            return words;  // the last one may be empty: it is yet to be typed
        }
        line.remove_prefix(end);
    }
}

template <class Named>
std::vector<std::string> Names(const Named& all)
{
    std::vector<std::string> names;
    for (const auto& one : all) {
        names.emplace_back(one.name);
    }
    return names;
}

std::vector<std::string> Candidates(Word word, const Vocabulary& vocabulary)
{
    std::vector<std::string> candidates;
    switch (word) {
        case Word::Panel:
            return vocabulary.panels;
        case Word::Code:
            return vocabulary.codes;
        case Word::Side:
            return {"buy", "sell"};
        case Word::OnOff:
            return {"on", "off"};
        case Word::Command:
            return Names(Commands());
        case Word::Scenario:
            return Names(Scenarios());
        case Word::Fault:
            return Names(Faults::All());
        case Word::Account:
            for (const AccountKind account : kAccounts) {
                candidates.push_back(AccountName(account));
            }
            return candidates;
        case Word::Phase:
            for (const Phase phase : kPhases) {
                candidates.push_back(PhaseWord(phase));
            }
            return candidates;
        case Word::Free:
            break;
    }
    return {};
}

}  // namespace

std::vector<std::string> Completions(std::string_view line, const Vocabulary& vocabulary)
{
    const std::vector<std::string_view> words = Words(line);
    Word kind = Word::Command;
    if (words.size() > 1) {
        const CommandDescription* const command = FindCommand(words.front());
        const std::size_t argument = words.size() - 2;
        kind = command && argument < command->words.size() ? command->words[argument] : Word::Free;
    }
    std::vector<std::string> fitting = Candidates(kind, vocabulary);
    std::erase_if(fitting,
                  [&words](const std::string& candidate) { return !candidate.starts_with(words.back()); });
    return fitting;
}

}  // namespace panelry::desk
