#pragma once

#include "base/singleton.h"
#include "services/records.h"

/// The installation's colours, "sysconfig/color.json" under the current directory, handed to every module as
/// they stand. What its keys mean is a matter between the installation and the modules.
///
/// Ownership: a singleton, made when the first panel is created, that lives to the end of the process.
/// Threading: made on the application thread, unchanged afterwards.
/// Failures: as ConfigStore.
class ColorTable : public panelry::Singleton<ColorTable>
{
public:
    ColorTable();

    ConfigTable* Table() { return &m_table; }

private:
    ConfigTable m_table;
};
