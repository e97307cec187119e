#include "simulator/camera/develop.h"

#include <algorithm>
#include <cerrno>
#include <dirent.h>
#include <dlfcn.h>
#include <fcntl.h>
#include <string_view>
#include <strings.h>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

#include "simulator/camera/heif_still.h"
#include "simulator/camera/pictures.h"
#include "simulator/sdk/strictness.h"

namespace camera_sim {
namespace {

using Draw = int (*)(const CameraSimPicture*);

// Beside this library; loaded with the first picture, so that the picture libraries cost a program
// that takes none nothing. Null, and said once, when it is not there or not whole.
void* picture_module() {
    static void* const module = [] {
        Dl_info self{};
        if (dladdr(reinterpret_cast<const void*>(&heif_still), &self) == 0) {
            return static_cast<void*>(nullptr);
        }
        std::string path = self.dli_fname;
        path.erase(path.rfind('/') + 1);
        path += "libcamera_sim_pictures.so";
        void* loaded = dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
        if (loaded == nullptr) {
            const char* why = dlerror();
            tell(std::string("no pictures can be drawn: ") + (why != nullptr ? why : path) +
                 "; name a folder of JPEGs in CAMERA_SIM_PICTURES to shoot those");
        }
        return loaded;
    }();
    return module;
}

int draw(const Picture& picture, const char* function, const std::string& path) {
    void* const module = picture_module();
    const auto drawing =
        module != nullptr ? reinterpret_cast<Draw>(dlsym(module, function)) : nullptr;
    if (drawing == nullptr) {
        return ENOTSUP;
    }
    const CameraSimPicture drawn{path.c_str(),   picture.model.c_str(), picture.serial.c_str(),
                                 picture.number, picture.time_seconds,  picture.width,
                                 picture.height, picture.seed};
    return drawing(&drawn);
}

bool write_all(int file, const unsigned char* bytes, std::size_t count) {
    while (count > 0) {
        const ssize_t written = write(file, bytes, count);
        if (written < 0 && errno == EINTR) {
            continue;
        }
        if (written < 0) {
            return false;
        }
        bytes += written;
        count -= static_cast<std::size_t>(written);
    }
    return true;
}

// Ends the writing of a file; one that is not whole goes away.
int close_written(int file, bool whole, const std::string& path) {
    int error = whole ? 0 : errno;
    if (close(file) != 0 && error == 0) {
        error = errno;
    }
    if (error != 0) {
        unlink(path.c_str());
    }
    return error;
}

int write_heif(const std::string& path) {
    const int file = open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0644);
    if (file < 0) {
        return errno;
    }
    return close_written(file, write_all(file, heif_still, sizeof heif_still), path);
}

int copy_file(const std::string& from, const std::string& path) {
    const int source = open(from.c_str(), O_RDONLY | O_CLOEXEC);
    if (source < 0) {
        return errno;
    }
    const int file = open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0644);
    if (file < 0) {
        const int error = errno;
        close(source);
        return error;
    }
    std::vector<unsigned char> buffer(std::size_t{1} << 16);
    ssize_t got = 0;
    bool whole = true;
    while (whole && (got = read(source, buffer.data(), buffer.size())) != 0) {
        whole = got > 0 && write_all(file, buffer.data(), static_cast<std::size_t>(got));
    }
    const int error = close_written(file, whole, path);
    close(source);
    return error;
}

bool is_jpeg(std::string_view name) {
    const std::size_t point = name.rfind('.');
    if (point == std::string_view::npos || name[0] == '.') {
        return false;
    }
    const std::string ending(name.substr(point));
    return strcasecmp(ending.c_str(), ".jpg") == 0 || strcasecmp(ending.c_str(), ".jpeg") == 0;
}

int copy_own_picture(const Picture& picture, const std::string& path) {
    std::vector<std::string> names;
    DIR* const folder = opendir(picture.own_pictures.c_str());
    if (folder == nullptr) {
        return errno;
    }
    while (const dirent* entry = readdir(folder)) {
        if (is_jpeg(entry->d_name)) {
            names.emplace_back(entry->d_name);
        }
    }
    closedir(folder);
    if (names.empty()) {
        tell("there is no JPEG in the folder of CAMERA_SIM_PICTURES, " + picture.own_pictures);
        return ENOENT;
    }
    std::sort(names.begin(), names.end());
    return copy_file(picture.own_pictures + "/" + names[picture.taken % names.size()], path);
}

}  // namespace

const char* ending(PictureKind kind) {
    switch (kind) {
        case PictureKind::raw:
            return ".ARW";
        case PictureKind::heif:
            return ".HIF";
        case PictureKind::jpeg:
            break;
    }
    return ".JPG";
}

int make_picture(const Picture& picture, PictureKind kind, const std::string& path) {
    switch (kind) {
        case PictureKind::raw:
            return draw(picture, "camera_sim_draw_raw", path);
        case PictureKind::heif:
            return write_heif(path);
        case PictureKind::jpeg:
            break;
    }
    return picture.own_pictures.empty() ? draw(picture, "camera_sim_draw_jpeg", path)
                                        : copy_own_picture(picture, path);
}

}  // namespace camera_sim
