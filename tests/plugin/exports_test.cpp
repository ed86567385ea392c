/// The built library exports what src/plugin/exports.txt lists, and nothing else.
#include "plugin/exported_symbols.h"

#include <gmock/gmock.h>

#include <cstdlib>
#include <sstream>

namespace {

test::LibraryDescription BuiltModule() {
    const char* path = std::getenv("TRN_MODULE");
    if (path == nullptr)
        throw std::runtime_error("TRN_MODULE is not set; run the tests through ctest");
    return test::DescribeLibrary(test::ReadFile(path));
}

std::set<std::string> ListedNames() {
    const test::Bytes file = test::ReadFile(test::SourceFolder() / "src" / "plugin" / "exports.txt");
    std::istringstream text(std::string(file.begin(), file.end()));
    std::set<std::string> names;
    for (std::string name; text >> name;)
        names.insert(name);
    return names;
}

} // namespace

TEST(Exports, AreTheListedNames) {
    const test::LibraryDescription module = BuiltModule();
    EXPECT_THAT(ListedNames(), testing::Contains("GetPluginReadModule"));
    EXPECT_THAT(module.exports, testing::ContainerEq(ListedNames()));
    EXPECT_EQ(module.unnamedExports, 0u);
}

TEST(Exports, TheLibraryIsKnownByItsName) {
    EXPECT_EQ(BuiltModule().name, TRN_MODULE_NAME);
}
