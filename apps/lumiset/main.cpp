#include <cstdio>
#include <exception>
#include <new>

#include "apps/lumiset/command_line.h"
#include "apps/lumiset/messages.h"
#include "apps/lumiset/usage_error.h"

namespace lumiset::app {
namespace {

int complain(int status, const char* sentence, const char* hint = "") {
    std::fprintf(stderr, "lumiset: %s%s\n", sentence, hint);
    return status;
}

int run(int argc, const char* const* argv) {
    try {
        Program program;
        CLI::App app;
        describeCommandLine(app, program);
        parseCommandLine(app, program, argc, argv);
        return program.run();
    } catch (const UsageError& error) {
        return complain(kWrongUsage, error.what(), " Try \"lumiset --help\".");
    } catch (const hostkit::ParameterError& error) {
        return complain(kWrongUsage, error.what());
    } catch (const std::bad_alloc&) {
        return complain(kFailed, "There is not enough memory.");
    } catch (const std::exception& error) {
        return complain(kFailed, error.what());
    }
}

}  // namespace
}  // namespace lumiset::app

int main(int argc, char** argv) {
    lumiset::app::holdStandardStreams();
    return lumiset::app::run(argc, argv);
}
