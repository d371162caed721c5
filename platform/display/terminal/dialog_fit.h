#pragma once
// A dialog on a terminal that has fewer rows than the dialog. Everything here runs on the dialog's
// thread.

#include "quennet_canvas.h"

#include <vector>

namespace quennet::terminal {

/// Closes up what a dialog leaves empty. A frame, a list box and a list view give up rows of their
/// own where nothing stands beside them, down to three; all other controls keep what they have. As
/// the terminal grows the rows come back.
class DialogFit {
  public:
    /// Moves the controls so that the dialog has at most so many rows, if that can be done. Where
    /// the program has moved some itself, their new places are taken for the dialog's own.
    void Fit(HWND dialog, int rows);

  private:
    struct Place {
        HWND window;
        RECT pixels;  // in the dialog; of itself, its size
        Area cells;
        bool gives;

        bool operator==(const Place& other) const;
    };
    using Places = std::vector<Place>;

    static Places PlacesOf(HWND dialog);
    static Places Without(const Places& places, const std::vector<bool>& closed);
    static void Move(const Places& places, const Places& before);

    Places own_;  // the dialog first
    Places set_;  // as they were left
};

}  // namespace quennet::terminal
