#pragma once
// The commands. Each returns when it is done, and throws Failure when it is not.

#include "options.h"
#include "status.h"
#include "watch.h"

namespace cli {

/// Prints the entries of a directory, or the one file that the URL names.
void RunList(const Options& options, Watch& watch, Status& status);

/// Downloads a file.
void RunGet(const Options& options, Watch& watch, Status& status);

/// Uploads a file.
void RunPut(const Options& options, Watch& watch, Status& status);

// Each changes one thing on the server.
void RunRemove(const Options& options, Watch& watch, Status& status);
void RunRemoveDirectory(const Options& options, Watch& watch, Status& status);
void RunMakeDirectory(const Options& options, Watch& watch, Status& status);
void RunMove(const Options& options, Watch& watch, Status& status);

// The same for whole trees: what -r makes of get, put and rm.
void RunGetTree(const Options& options, Watch& watch, Status& status);
void RunPutTree(const Options& options, Watch& watch, Status& status);
void RunRemoveTree(const Options& options, Watch& watch, Status& status);

/// Changes permissions, of a whole tree with -R. Without a mode the dialog asks, in the terminal.
void RunChangePermissions(const Options& options, Watch& watch, Status& status);

/// Copies a file from one server to another.
void RunServerCopy(const Options& options, Watch& watch, Status& status);

/// Searches a tree and prints what it finds; with a window a person does, in the terminal.
void RunFind(const Options& options, Watch& watch, Status& status);

/// Sends a typed line in the URL's directory and prints its replies.
void RunRaw(const Options& options, Watch& watch, Status& status);

/// Sends echo requests to a host and prints what becomes of them; with a window a person does, in
/// the terminal.
void RunPing(const Options& options, Watch& watch, Status& status);

/// Opens the connection dialog in the terminal, connects, and shows conversation and listing until
/// a key is pressed.
void RunConnect(const Options& options, Status& status);

/// Prints the site book, without its passwords.
void RunSites(const Options& options);

/// Walks through the main job on a server of its own, and proves each step.
void RunDemo(const Options& options, Watch& watch);

}  // namespace cli
