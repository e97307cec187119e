#include "simulator/camera/develop.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
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
#include "simulator/camera/pictures/file.h"
#include "simulator/sdk/strictness.h"

namespace camera_sim {
namespace {

using Draw = int (*)(const CameraSimPicture*);

// The folder of this library, with a slash; empty when the system does not tell.
std::string beside_this_library() {
    Dl_info self{};
    if (dladdr(reinterpret_cast<const void*>(&heif_still), &self) == 0) {
        return "";
    }
    std::string path = self.dli_fname;
    path.erase(path.rfind('/') + 1);
    return path;
}

struct PictureModule {
    void* loaded;     // null when it is not there or not whole
    std::string why;  // it is null
};

// Beside this library; loaded with the first picture, so that the picture libraries cost a program
// that takes none nothing.
const PictureModule& picture_module() {
    static const PictureModule& module = *new PictureModule([] {
        const std::string path = beside_this_library() + "libcamera_sim_pictures.so";
        void* loaded = dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
        const char* why = loaded == nullptr ? dlerror() : "";
        return PictureModule{loaded, why != nullptr ? why : path};
    }());
    return module;
}

// Said once.
int no_pictures() {
    static const bool said = [] {
        tell("no pictures can be drawn: " + picture_module().why +
             "; name a folder of JPEGs in CAMERA_SIM_PICTURES to shoot those");
        return true;
    }();
    static_cast<void>(said);
    return ENOTSUP;
}

int draw(const Picture& picture, const char* function, const std::string& path) {
    void* const module = picture_module().loaded;
    const auto drawing =
        module != nullptr ? reinterpret_cast<Draw>(dlsym(module, function)) : nullptr;
    if (drawing == nullptr) {
        return no_pictures();
    }
    const CameraSimPicture drawn{path.c_str(),   picture.model.c_str(), picture.serial.c_str(),
                                 picture.number, picture.time_seconds,  picture.width,
                                 picture.height, picture.seed};
    return drawing(&drawn);
}

int write_heif(const std::string& path) {
    PictureFile file(path.c_str());
    file.write(heif_still, sizeof heif_still);
    return file.finish();
}

// What is wrong with the user's own pictures is no fault of the folder that a shot goes into.
int said_of_own_pictures(const std::string& what, int error) {
    tell(what + " of CAMERA_SIM_PICTURES cannot be read: " + std::strerror(error));
    return ENOTSUP;
}

// A pipe among the pictures would never end, and opening it would wait for who writes into it.
int open_regular(const std::string& path) {
    const int file = open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
    struct stat facts {};
    if (file >= 0 && (fstat(file, &facts) != 0 || !S_ISREG(facts.st_mode))) {
        close(file);
        errno = EINVAL;
        return -1;
    }
    return file;
}

int copy_file(const std::string& from, const std::string& path) {
    const int source = open_regular(from);
    if (source < 0) {
        return said_of_own_pictures("the picture " + from, errno);
    }
    PictureFile copy(path.c_str());
    std::vector<unsigned char> buffer(std::size_t{1} << 16);
    int unread = 0;
    ssize_t got = 1;
    while (got != 0 && unread == 0 && copy.error() == 0) {
        got = read(source, buffer.data(), buffer.size());
        if (got > 0) {
            copy.write(buffer.data(), static_cast<std::size_t>(got));
        } else if (got < 0 && errno != EINTR) {
            unread = errno;
        }
    }
    close(source);
    // A copy that is not finished goes with its object.
    return unread != 0 ? said_of_own_pictures("the picture " + from, unread) : copy.finish();
}

bool is_jpeg(std::string_view name) {
    const std::size_t point = name.rfind('.');
    if (point == std::string_view::npos || name[0] == '.') {
        return false;
    }
    const std::string ending(name.substr(point));
    return strcasecmp(ending.c_str(), ".jpg") == 0 || strcasecmp(ending.c_str(), ".jpeg") == 0;
}

// The pictures in a folder, by name; 0 or an errno value.
int list_pictures(const std::string& folder, std::vector<std::string>& paths) {
    DIR* const entries = opendir(folder.c_str());
    if (entries == nullptr) {
        return errno;
    }
    while (const dirent* entry = readdir(entries)) {
        const std::string path = folder + "/" + entry->d_name;
        struct stat facts {};
        if (is_jpeg(entry->d_name) && stat(path.c_str(), &facts) == 0 && S_ISREG(facts.st_mode)) {
            paths.push_back(path);
        }
    }
    closedir(entries);
    std::sort(paths.begin(), paths.end());
    return 0;
}

// The RAW with the name of this JPEG; empty when there is none.
std::string raw_beside(const std::string& jpeg) {
    const std::string stem = jpeg.substr(0, jpeg.rfind('.'));
    for (const char* ending : {".ARW", ".arw", ".DNG", ".dng"}) {
        struct stat facts {};
        if (stat((stem + ending).c_str(), &facts) == 0 && S_ISREG(facts.st_mode)) {
            return stem + ending;
        }
    }
    return "";
}

// Listed once: shots may go into the same folder, and a shot of a shot is not the user's picture.
struct FolderOfPictures {
    std::string folder;
    std::vector<std::string> jpegs;
    std::vector<std::string> raws;  // of each JPEG; empty where it has none
    int error = 0;                  // an errno value when it cannot be listed
};

const FolderOfPictures& pictures_in(const std::string& folder) {
    static FolderOfPictures& listed = *new FolderOfPictures;  // of the one thread that transfers
    if (listed.jpegs.empty() || listed.folder != folder) {
        listed = FolderOfPictures{};
        listed.folder = folder;
        listed.error = list_pictures(folder, listed.jpegs);
        for (const std::string& jpeg : listed.jpegs) {
            listed.raws.push_back(raw_beside(jpeg));
        }
    }
    return listed;
}

// The RAW whose turn it is; empty when there is none.
std::string own_raw(const Picture& picture, const std::string& folder) {
    const std::vector<std::string>& raws = pictures_in(folder).raws;
    return raws.empty() ? "" : raws[picture.taken % raws.size()];
}

int copy_own_jpeg(const Picture& picture, const std::string& folder, const std::string& path) {
    const FolderOfPictures& own = pictures_in(folder);
    if (own.error != 0) {
        return said_of_own_pictures("the folder " + folder, own.error);
    }
    if (own.jpegs.empty()) {
        tell("there is no JPEG in the folder of CAMERA_SIM_PICTURES, " + folder);
        return ENOTSUP;
    }
    return copy_file(own.jpegs[picture.taken % own.jpegs.size()], path);
}

// Where pictures are copied from; empty: they are drawn. What is handed out without the libraries
// that drawing takes has a few pictures beside this library.
std::string folder_to_copy(const Picture& picture) {
    if (!picture.own_pictures.empty() || picture_module().loaded != nullptr) {
        return picture.own_pictures;
    }
    std::string kept = beside_this_library() + "pictures";
    return pictures_in(kept).jpegs.empty() ? "" : kept;
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
    if (kind == PictureKind::heif) {
        return write_heif(path);
    }
    const std::string folder = folder_to_copy(picture);
    if (kind == PictureKind::raw) {
        const std::string own = folder.empty() ? "" : own_raw(picture, folder);
        return own.empty() ? draw(picture, "camera_sim_draw_raw", path) : copy_file(own, path);
    }
    return folder.empty() ? draw(picture, "camera_sim_draw_jpeg", path)
                          : copy_own_jpeg(picture, folder, path);
}

}  // namespace camera_sim
