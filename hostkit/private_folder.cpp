#include "hostkit/private_folder.h"

#include <errno.h>
#include <sys/stat.h>

namespace hostkit {

bool MakePrivateFolders(const std::filesystem::path& folder) {
    if (folder.empty() || mkdir(folder.c_str(), 0700) == 0 || errno == EEXIST) {
        return true;
    }
    return errno == ENOENT && folder.parent_path() != folder &&
           MakePrivateFolders(folder.parent_path()) &&
           (mkdir(folder.c_str(), 0700) == 0 || errno == EEXIST);
}

}  // namespace hostkit
