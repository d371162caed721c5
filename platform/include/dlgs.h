#pragma once
// Numbers of the controls in the platform's own dialogs, as the platform numbers them.

#define stc1 0x0440
#define stc2 0x0441
#define stc3 0x0442
#define lst1 0x0460
#define cmb1 0x0470
#define edt1 0x0480
