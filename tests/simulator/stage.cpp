#include "tests/simulator/stage.h"

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <gtest/gtest.h>
#include <sstream>
#include <unistd.h>

using namespace SCRSDK;

namespace {

// Names the folder of the stage around this one: the child of a death test makes its own inside its
// parent's, which is there to remove it.
constexpr const char* outer_folder = "SIMULATOR_TESTS_FOLDER";

std::filesystem::path fresh_folder() {
    const char* outer = std::getenv(outer_folder);
    const auto parent = outer != nullptr ? outer : std::filesystem::temp_directory_path();
    std::string name = (parent / "stage-XXXXXX").string();
    if (mkdtemp(name.data()) == nullptr) {
        std::abort();
    }
    if (outer == nullptr) {
        setenv(outer_folder, name.c_str(), 1);
    }
    return name;
}

}  // namespace

Stage::Stage(const std::string& scene) : folder_(fresh_folder()) {
    std::filesystem::create_directory(shots());
    std::ofstream(folder_ / "scene") << "timing instant\npicture 64x48\n" << scene << "\n";
    setenv("CAMERA_SIM_SCENE", (folder_ / "scene").c_str(), 1);
    setenv("CAMERA_SIM_JOURNAL", (folder_ / "journal").c_str(), 1);
    setenv("CAMERA_SIM_CONTROL", (folder_ / "control").c_str(), 1);
    unsetenv("CAMERA_SIM_PICTURES");
}

Stage::~Stage() {
    if (running_) {
        close();
    }
    if (std::getenv(outer_folder) == folder_) {
        unsetenv(outer_folder);
    }
    std::filesystem::remove_all(folder_);
}

bool Stage::init() {
    running_ = Init(0);
    control_ = camera_sim::ControlClient::connect((folder_ / "control").string());
    return running_;
}

ICrEnumCameraObjectInfo* Stage::find() {
    ICrEnumCameraObjectInfo* cameras = nullptr;
    EXPECT_EQ(EnumCameraObjects(&cameras, 3), 0U);
    return cameras;
}

CrInt32u Stage::connect(CrInt32u index) {
    ICrEnumCameraObjectInfo* cameras = find();
    if (cameras == nullptr) {
        ADD_FAILURE() << "no camera was found";
        return 1;
    }
    const CrInt32u result = Connect(cameras->GetCameraObjectInfo(index), &recorder, &handle);
    cameras->Release();
    return result;
}

void Stage::open() {
    ASSERT_TRUE(init());
    ASSERT_EQ(connect(), 0U);
    ASSERT_TRUE(recorder.got("OnConnected 3"));
}

void Stage::save_to(const std::filesystem::path& folder) {
    EXPECT_EQ(save_info(folder.string()), 0U);
    EXPECT_EQ(set(0x011A, 2), 0U);
    EXPECT_EQ(set(0x0119, 1), 0U);
}

CrInt32u Stage::set(CrInt32u code, CrInt64u value) {
    CrDeviceProperty property;
    property.SetCode(code);
    property.SetCurrentValue(value);
    property.SetValueType(CrDataType_UInt);
    return SetDeviceProperty(handle, &property);
}

std::optional<CrInt64u> Stage::get(CrInt32u code) {
    CrDeviceProperty* properties = nullptr;
    CrInt32 count = 0;
    const CrInt32u result = GetSelectDeviceProperties(handle, 1, &code, &properties, &count);
    std::optional<CrInt64u> value;
    if (result == 0 && count > 0 && properties[0].IsGetEnableCurrentValue()) {
        value = properties[0].GetCurrentValue();
    }
    if (properties != nullptr) {
        ReleaseDeviceProperties(handle, properties);
    }
    return value;
}

CrInt32u Stage::save_info(const std::string& path, const std::string& prefix, int number) {
    std::string path_copy = path;
    std::string prefix_copy = prefix;
    return SetSaveInfo(handle, path_copy.data(), prefix_copy.data(), number);
}

void Stage::shoot() {
    EXPECT_EQ(set(0x0001, 2), 0U);
    EXPECT_EQ(SendCommand(handle, 0, 1), 0U);
    EXPECT_EQ(SendCommand(handle, 0, 0), 0U);
    EXPECT_EQ(set(0x0001, 1), 0U);
}

void Stage::close() {
    if (handle != 0) {
        Disconnect(handle);
        ReleaseDevice(handle);
        handle = 0;
    }
    running_ = false;
    EXPECT_TRUE(Release());
}

std::string Stage::tell(const std::string& line) {
    const auto reply = control_ ? control_->ask(line) : std::nullopt;
    if (!reply) {
        return "nobody answered";
    }
    return reply->ok ? "" : reply->error;
}

std::vector<std::string> Stage::state() {
    const auto reply = control_ ? control_->ask("state") : std::nullopt;
    return reply ? reply->lines : std::vector<std::string>();
}

void Stage::wait() {
    EXPECT_EQ(tell("wait"), "");
}

std::vector<std::vector<std::string>> Stage::journal_fields() {
    std::ifstream file(folder_ / "journal");
    std::vector<std::vector<std::string>> lines;
    for (std::string line; std::getline(file, line);) {
        std::istringstream fields(line);
        lines.emplace_back();
        for (std::string field; std::getline(fields, field, '\t');) {
            lines.back().push_back(field);
        }
    }
    return lines;
}

std::vector<std::string> Stage::journal() {
    std::vector<std::string> calls;
    for (const auto& fields : journal_fields()) {
        calls.push_back(fields.size() == 5 ? fields[3] + " " + fields[4] : "not five fields");
    }
    return calls;
}

std::vector<std::string> Stage::files() {
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(shots())) {
        names.push_back(entry.path().filename().string());
    }
    std::sort(names.begin(), names.end());
    return names;
}
