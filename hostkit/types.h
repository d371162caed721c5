#pragma once
// The module's number types and host words, under hostkit's own name.

#include "host/types.h"

namespace hostkit {

using quennet::HostWord;
using quennet::i16;
using quennet::i32;
using quennet::i64;
using quennet::u16;
using quennet::u32;
using quennet::u64;
using quennet::u8;
using quennet::WindowNumber;

}  // namespace hostkit
