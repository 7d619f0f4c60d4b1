// Where the processes of a machine meet: the IPC directory and what is known by name in it. Made at attach, freed at
// detach; nothing here makes the directory.
#ifndef IPC_PATHS_H
#define IPC_PATHS_H

namespace qzvest {

// 1, or 0 when memory runs out.
int SMIPCPathsInit();
void IPCPathsFree();

// NULL while not attached.
const char *IPCDirectory();
const char *IPCRegistryFile();
const char *IPCRegistryLockPath();

} // namespace qzvest

#endif
