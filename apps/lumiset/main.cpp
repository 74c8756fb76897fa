#include <exception>
#include <new>
#include <string>
#include <vector>

#include "apps/lumiset/command_line.h"
#include "apps/lumiset/messages.h"
#include "apps/lumiset/usage_error.h"
#include "platform/program.h"
#include "platform/standard_streams.h"

namespace lumiset::app {
namespace {

int complain(int status, const char* sentence, const char* hint = "") {
    tell(std::string("lumiset: ") + sentence + hint + '\n');
    return status;
}

int run(const std::vector<std::string>& arguments) {
    try {
        Program program;
        CLI::App app;
        describeCommandLine(app, program);
        parseCommandLine(app, program, arguments);
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
    lumiset::platform::holdStandardStreams();
    return lumiset::app::run(lumiset::platform::programArguments(argc, argv));
}
