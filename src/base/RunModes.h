#pragma once

namespace corvane {

/// How this run of the program was started. Set once from the command line, then only read.
struct RunModes {
    bool DebugMode = false;        ///< Diagnostic lines are written.
    bool ProgramMode = false;      ///< The program writes the strings of blank link hardware.
    bool ProgramAnyDevice = false; ///< Every device counts as blank link hardware.
    bool EEPROMMode = false;       ///< The program starts in the EEPROM editor.
};

} // namespace corvane
