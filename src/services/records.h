#pragma once

#include <map>
#include <string>

/// The records that library, modules and host share. They cross those borders as live standard containers,
/// so all sides must be built with one compiler and one standard library.

/// One flat record: the stock of message 102, the exchange with the host under callback code 2, the fields
/// of an order ticket. All values are text (numbers in decimal, flags "1" and "0"), UTF-8 unless a use says
/// otherwise; an absent key reads as empty.
using StringMap = std::map<std::string, std::string>;

/// Settings: section name to key to value, all UTF-8. Read once per process and never changed afterwards,
/// so a table may be read from any thread.
using ConfigTable = std::map<std::string, std::map<std::string, std::string>>;

namespace panelry
{

/// The value of a key, empty where it is absent. Good as long as the record stays as it is.
inline const std::string& FieldOf(const StringMap& record, const std::string& key)
{
    static const std::string& absent = *new std::string;  // threads that outlive main() read, too
    const auto field = record.find(key);
    return field == record.end() ? absent : field->second;
}

}  // namespace panelry
