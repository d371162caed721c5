#pragma once
// Fonts of the platform, for POSIX systems. The displays of this layer have one font; what a window
// is told to use is kept and not looked at.

#include "windef.h"

#define LF_FACESIZE 32

typedef struct tagLOGFONTA {
    LONG lfHeight;
    LONG lfWidth;
    LONG lfEscapement;
    LONG lfOrientation;
    LONG lfWeight;
    BYTE lfItalic;
    BYTE lfUnderline;
    BYTE lfStrikeOut;
    BYTE lfCharSet;
    BYTE lfOutPrecision;
    BYTE lfClipPrecision;
    BYTE lfQuality;
    BYTE lfPitchAndFamily;
    CHAR lfFaceName[LF_FACESIZE];
} LOGFONTA;

QUENNET_PLATFORM_BEGIN

/// A font for WM_SETFONT; DeleteObject ends it.
QUENNET_PLATFORM_API HFONT WINAPI CreateFontIndirectA(const LOGFONTA* font);
/// Copies at most `size` bytes of a font's LOGFONTA; the bytes copied, 0 for no font. A null buffer
/// asks for its size.
QUENNET_PLATFORM_API INT WINAPI GetObjectA(HANDLE object, INT size, LPVOID buffer);
/// FALSE for what is no font, or none any more.
QUENNET_PLATFORM_API BOOL WINAPI DeleteObject(HGDIOBJ object);

QUENNET_PLATFORM_END
