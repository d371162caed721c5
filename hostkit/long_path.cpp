#include "hostkit/long_path.h"

#include "hostkit/connection_use.h"

namespace hostkit {

namespace {

constexpr char longName[] = "\x01the path of this message";

thread_local const std::string* current = nullptr;

}  // namespace

LongPath::LongPath(const std::string& path) : path_(path) {
    current = &path_;
}

LongPath::~LongPath() {
    current = nullptr;
}

std::string LongPath::Name() const {
    return path_.size() < pathSize ? path_ : longName;
}

std::string LongPath::Of(const char* name) {
    return current != nullptr && std::string(name) == longName ? *current : name;
}

}  // namespace hostkit
