// Loads the module once and lets other programs read what it wrote.

#include "tests/simulator/pictures/picture_fixture.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <dlfcn.h>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <sys/wait.h>

namespace {

constexpr int program_not_found = 127;

DrawFunction* function(const char* name) {
    // Never unloaded, as in the simulated SDK.
    static void* const library = dlopen(PICTURE_MODULE, RTLD_NOW | RTLD_LOCAL);
    return library == nullptr ? nullptr : reinterpret_cast<DrawFunction*>(dlsym(library, name));
}

}  // namespace

PictureTest::PictureTest()
    : folder(testing::TempDir() + "pictures-XXXXXX"),
      module_jpeg(function("camera_sim_draw_jpeg")),
      module_raw(function("camera_sim_draw_raw")),
      draw_heif(function("camera_sim_draw_heif")) {
    if (module_jpeg == nullptr || module_raw == nullptr || draw_heif == nullptr ||
        mkdtemp(folder.data()) == nullptr) {
        std::fprintf(stderr, "cannot load %s or make %s\n", PICTURE_MODULE, folder.c_str());
        std::abort();
    }
}

PictureTest::~PictureTest() {
    std::error_code ignored;
    std::filesystem::remove_all(folder, ignored);
}

int PictureTest::draw_jpeg(const CameraSimPicture* picture) const {
    std::filesystem::remove(picture->path);
    return module_jpeg(picture);
}

int PictureTest::draw_raw(const CameraSimPicture* picture) const {
    std::filesystem::remove(picture->path);
    return module_raw(picture);
}

CameraSimPicture PictureTest::picture(const std::string& path) const {
    return {path.c_str(), "MODEL-A", "00123456", 1, 1772366400, 640, 480, 1};
}

std::string PictureTest::path(const std::string& name) const {
    return folder + "/" + name;
}

std::vector<std::string> PictureTest::files() const {
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(folder)) {
        names.push_back(entry.path().filename().string());
    }
    std::sort(names.begin(), names.end());
    return names;
}

std::string content(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

std::string output_of(const std::string& program, const std::string& package,
                      const std::string& arguments) {
    std::string output;
    FILE* pipe = popen((program + " " + arguments).c_str(), "r");
    if (pipe == nullptr) {
        ADD_FAILURE() << "cannot start a shell for " << program;
        return output;
    }
    char part[4096];
    while (const std::size_t count = std::fread(part, 1, sizeof part, pipe)) {
        output.append(part, count);
    }
    const int status = pclose(pipe);
    if (WIFEXITED(status) && WEXITSTATUS(status) == program_not_found) {
        ADD_FAILURE() << program << " is not installed, and without it nobody else reads the "
                      << "picture: apt-get install " << package;
    } else {
        EXPECT_EQ(status, 0) << program << " " << arguments;
    }
    return output;
}

std::string exiftool(const std::string& arguments) {
    return output_of("exiftool", "libimage-exiftool-perl", arguments);
}
