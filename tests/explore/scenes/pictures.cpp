// Shots and files.

#include "tests/explore/scenes/all.h"

namespace explore {

const Scene capture_and_download{
    .name = "capture_and_download",
    .proves = "A shot is fired in its own time, and its file is reported from whatever thread.",
    .arguments = {"/shots", "ignored", "card"},
    .host =
        [] {
            host::connect();
            host::write("CAPTURE");
            host::write("capture_nonaf");
            host::await_anywhere("DOWNLOADED|/shots/DSC00001.JPG");
            host::write("QUIT");
        },
    .camera =
        [] {
            device::answer_connect();
            device::await_call(Call::send_command, 2);
            device::downloaded("DSC00001.JPG");
            device::downloaded("DSC00002.JPG", 0);
        },
};

const Scene capture_while_camera_goes{
    .name = "capture_while_camera_goes",
    .proves = "Once the shutter is half-pressed it is let go, whatever becomes of the session.",
    .host =
        [] {
            host::connect();
            host::write("CAPTURE");
            host::write("CAPTURE");
            host::await("REMOTE_CAPTURED|OK");
            host::write("DISCONNECT");
            host::write("QUIT");
        },
    .camera =
        [] {
            device::answer_connect();
            device::await_call(Call::set_property, 3);
            device::pause(700 * millisecond);
            device::disconnected(0x8208);
            device::error(0x8208);
        },
};

const Scene downloads_while_folder_changes{
    .name = "downloads_while_folder_changes",
    .proves = "A path is made of one folder, the old or the new one, never of both.",
    .arguments = {"/the/first/folder/of/them/all"},
    .host =
        [] {
            host::write("CONNECT");
            host::await("STATUS|Opening camera session");
            host::write("SET_DOWNLOAD_DIR|/second");
            host::write("SET_DOWNLOAD_DIR|/the/third/and/longest/folder/of/them/all");
            host::await("DOWNLOAD_DIR|/the/third/and/longest/folder/of/them/all");
            host::pause(second);
            host::write("QUIT");
        },
    .camera =
        [] {
            device::await_connect();
            device::downloaded("a|b.JPG");
            device::downloaded("DSC00002.ARW");
        },
    .second =
        [] {
            device::await_connect();
            device::downloaded("/absolute.JPG");
            device::downloaded("DSC00003.ARW");
            device::downloaded("");
        },
};

const Scene signal_during_capture{
    .name = "signal_during_capture",
    .proves = "A signal lets a running capture and the commands before it finish.",
    .arguments = {"/shots"},
    .host =
        [] {
            host::connect();
            host::write("CAPTURE");
            host::write("PRIME");
        },
    .camera =
        [] {
            device::answer_connect();
            device::await_call(Call::send_command, 1);
            device::downloaded("DSC00001.JPG");
        },
    .signals =
        [] {
            kernel::pause(300 * millisecond);
            kernel::raise_signal(15);
            kernel::raise_signal(15);
        },
};

}  // namespace explore
