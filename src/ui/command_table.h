#pragma once
// Every command of the frame's menus as data: the menu it sits in, its label
// exactly as the user sees it (with "&" before the access key and the
// shortcut after a tab), and whether it is offered without an open project.
// The frame builds both menus (short and full) from this one table.
#include <span>

namespace sb {

enum class command_id : int {
    fileNew,
    fileOpen,
    fileOpenServer,
    importRunFiles,
    importEsa,
    importWeatherDaily,
    importWeatherMonthly,
    importMonthlyAverages,
    exportEsa,
    fileClose,
    configuration,
    diurnaOutputFiles,
    print,
    printPreview,
    printSetup,
    exit,
    editCopy,
    editPaste,
    editRecord,
    editCrops,
    editCultivation,
    editFertilizers,
    editFires,
    editOmad,
    editGraze,
    editHarvest,
    editIrrigation,
    editTrees,
    editTreeRemoval,
    editSoils,
    editWeatherStations,
    copyOutputToInput,
    viewEvents,
    viewAnnual,
    viewMonthly,
    viewDaily,
    viewToolbar,
    viewStatusBar,
    windowNew,
    windowCascade,
    windowTile,
    windowArrange,
    recordFirst,
    recordPrevious,
    recordNext,
    recordLast,
    recordGoto,
    recordGotoId,
    recordDelete,
    runOne,
    runMultiple,
    readBin,
    about,
    count
};

struct command_def {
    command_id id;
    const char* menu;      // top-level menu title, e.g. "&File"
    const char* submenu;   // "" or a sub-menu title, e.g. "&Import"
    const char* label;     // e.g. "&New\tCtrl+N"; the part after the tab is the shortcut
    bool withoutDocument;  // offered in the short menu
    bool separatorBefore;
};

// In menu order.
std::span<const command_def> commandTable();
const command_def& commandDef(command_id id);

// The menu titles of the full menu, in order, and of the short menu.
std::span<const char* const> fullMenuTitles();
std::span<const char* const> shortMenuTitles();

}  // namespace sb
