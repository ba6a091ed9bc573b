// Puts Info.plist into the executable, in the section where the system looks for that of a program
// without a bundle. Linkers have an option for it, but not all that build for macOS.
asm(".section __TEXT,__info_plist\n"
    ".no_dead_strip _info_plist\n"
    "_info_plist:\n"
    ".incbin \"" INFO_PLIST
    "\"\n"
    ".text\n");
