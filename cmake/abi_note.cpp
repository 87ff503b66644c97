// The ABI that a module library was built for, as an ELF note: records cross between library and module as
// live C++ objects, so compiler, standard library, Qt major and SDK major must agree. Tools read the note;
// the library itself does not.

#include <QtGlobal>

#include "hosting/sdk_version.h"

#define PANELRY_TEXT_OF(x) #x
#define PANELRY_TEXT(x) PANELRY_TEXT_OF(x)

#if defined(_GLIBCXX_USE_CXX11_ABI) && _GLIBCXX_USE_CXX11_ABI
#define PANELRY_STANDARD_LIBRARY "libstdc++/cxx11"
#elif defined(__GLIBCXX__)
#define PANELRY_STANDARD_LIBRARY "libstdc++/old"
#else
#define PANELRY_STANDARD_LIBRARY "other"
#endif

namespace
{

constexpr char kAbi[] =
    "cxxabi=" PANELRY_TEXT(__GXX_ABI_VERSION) ";stdlib=" PANELRY_STANDARD_LIBRARY ";qt=" PANELRY_TEXT(
        QT_VERSION_MAJOR) ";sdk=" PANELRY_TEXT(PANELRY_SDK_MAJOR);

struct AbiNote {
    unsigned nameSize = sizeof name;
    unsigned textSize = sizeof text;
    unsigned type = 1;
    char name[8] = "Panelry";
    char text[(sizeof kAbi + 3) / 4 * 4] = {};
};

constexpr AbiNote MakeNote()
{
    AbiNote note;
    for (unsigned i = 0; i < sizeof kAbi; ++i) {
        note.text[i] = kAbi[i];
    }
    return note;
}

__attribute__((section(".note.panelry.abi"), used, aligned(4))) const AbiNote abiNote = MakeNote();

}  // namespace
