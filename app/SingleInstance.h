#pragma once
// One control panel per executable image: another process running the same
// image file (compared case-insensitively by its image name) means the
// program is already running.
namespace CL {
bool IsAnotherInstanceRunning();
}
