#include "support/stage.h"

#include <cstdio>
#include <cstdlib>

#include "support/rounds.h"

namespace fs = std::filesystem;

namespace panelry::bench
{

Stage::Stage()
{
    std::string name = fs::temp_directory_path() / "panelry-bench-XXXXXX";
    Check(mkdtemp(name.data()) != nullptr, "no temporary directory");
    m_directory = name;
    fs::create_directory(m_directory / "adsplugins");
}

Stage::~Stage()
{
    std::error_code ignored;
    fs::remove_all(m_directory, ignored);
}

void Stage::AddModules(int count)
{
    for (int number = 1; number <= count; ++number) {
        fs::copy_file(BuildOutput() / "bench_modules/bench_module.so",
                      m_directory / "adsplugins" / ("bench_module_" + std::to_string(number) + ".so"));
    }
}

std::string Stage::RunSelf(const std::string& arguments)
{
    const fs::path program = m_directory / "program";
    if (!fs::exists(program)) {
        fs::copy_file("/proc/self/exe", program);
    }
    std::FILE* const pipe = popen((program.string() + " " + arguments).c_str(), "r");
    Check(pipe != nullptr, "no child process");
    std::string output;
    char block[4096];
    for (std::size_t size = 0; (size = std::fread(block, 1, sizeof block, pipe)) > 0;) {
        output.append(block, size);
    }
    Check(pclose(pipe) == 0, "a child process failed");
    return output;
}

fs::path BuildOutput()
{
    return fs::read_symlink("/proc/self/exe").parent_path();
}

}  // namespace panelry::bench
