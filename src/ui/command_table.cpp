#include "ui/command_table.h"

#include <array>

namespace sb {
namespace {

constexpr const char* kFile = "&File";
constexpr const char* kEdit = "&Edit";
constexpr const char* kView = "&View";
constexpr const char* kWindow = "&Window";
constexpr const char* kRecord = "&Record";
constexpr const char* kExecute = "E&xecute";
constexpr const char* kHelp = "&Help";
constexpr const char* kImport = "&Import";
constexpr const char* kExport = "&Export";

using C = command_id;
constexpr command_def kCommands[] = {
    {C::fileNew, kFile, "", "&New\tCtrl+N", true, false},
    {C::fileOpen, kFile, "", "&Open...\tCtrl+O", true, false},
    {C::fileOpenServer, kFile, "", "Open Postgre&SQL Project...", true, false},
    {C::importRunFiles, kFile, kImport, "&Run Files", false, false},
    {C::importEsa, kFile, kImport, "ES&A", false, false},
    {C::importWeatherDaily, kFile, kImport, "Weather &Daily Records", false, false},
    {C::importWeatherMonthly, kFile, kImport, "Weather Mon&thly Records", false, false},
    {C::importMonthlyAverages, kFile, kImport, "&Monthly Weather Averages (<site>.100 file)", false, false},
    {C::exportEsa, kFile, kExport, "ES&A", false, false},
    {C::fileClose, kFile, "", "&Close", false, false},
    {C::configuration, kFile, "", "&Configuration", true, true},
    {C::diurnaOutputFiles, kFile, "", "Diurna Output Files", true, false},
    {C::print, kFile, "", "&Print...\tCtrl+P", false, true},
    {C::printPreview, kFile, "", "Print Pre&view", false, false},
    {C::printSetup, kFile, "", "P&rint Setup...", true, false},
    // The recent-file entries are inserted before Exit by the frame.
    {C::exit, kFile, "", "E&xit", true, true},

    {C::editCopy, kEdit, "", "&Copy\tCtrl+C", false, false},
    {C::editPaste, kEdit, "", "&Paste\tCtrl+V", false, false},
    {C::editRecord, kEdit, "", "Edit Selected &Record", false, true},
    {C::editCrops, kEdit, "", "Edit Crops", false, true},
    {C::editCultivation, kEdit, "", "Edit Cultivation", false, false},
    {C::editFertilizers, kEdit, "", "Edit Fertilizers", false, false},
    {C::editFires, kEdit, "", "Edit Fi&res", false, false},
    {C::editOmad, kEdit, "", "Edit &OMAD", false, false},
    {C::editGraze, kEdit, "", "Edit &Graze List", false, false},
    {C::editHarvest, kEdit, "", "Edit Harvest", false, false},
    {C::editIrrigation, kEdit, "", "Edit Irrigation", false, false},
    {C::editTrees, kEdit, "", "Edit T&rees", false, false},
    {C::editTreeRemoval, kEdit, "", "Edit Tree Re&moval", false, false},
    {C::editSoils, kEdit, "", "Edit Soils", false, true},
    {C::editWeatherStations, kEdit, "", "Edit &Weather Stations", false, false},
    {C::copyOutputToInput, kEdit, "", "Copy output values to input", false, true},

    {C::viewEvents, kView, "", "View &Events", false, false},
    {C::viewAnnual, kView, "", "View &Annual Output", false, false},
    {C::viewMonthly, kView, "", "View &Monthly Output", false, false},
    {C::viewDaily, kView, "", "View &Daily Output", false, false},
    {C::viewToolbar, kView, "", "&Toolbar", true, true},
    {C::viewStatusBar, kView, "", "&Status Bar", true, false},

    {C::windowNew, kWindow, "", "&New Window", false, false},
    {C::windowCascade, kWindow, "", "&Cascade", false, false},
    {C::windowTile, kWindow, "", "&Tile", false, false},
    {C::windowArrange, kWindow, "", "&Arrange Icons", false, false},

    {C::recordFirst, kRecord, "", "First", false, false},
    {C::recordPrevious, kRecord, "", "Previous", false, false},
    {C::recordNext, kRecord, "", "Next", false, false},
    {C::recordLast, kRecord, "", "Last", false, false},
    {C::recordGoto, kRecord, "", "Goto", false, true},
    {C::recordGotoId, kRecord, "", "Goto ID", false, false},
    {C::recordDelete, kRecord, "", "Delete", false, true},

    {C::runOne, kExecute, "", "Run &One Record", false, false},
    {C::runMultiple, kExecute, "", "Run &Multiple Records", false, false},
    {C::readBin, kExecute, "", "Read .BIN file", false, true},

    {C::about, kHelp, "", "&About Tellura && Soilbench...", true, false},
};
static_assert(std::size(kCommands) == static_cast<size_t>(command_id::count));

constexpr std::array<const char*, 7> kFullMenus = {kFile, kEdit, kView, kWindow, kRecord, kExecute, kHelp};
constexpr std::array<const char*, 3> kShortMenus = {kFile, kView, kHelp};

}  // namespace

std::span<const command_def> commandTable() { return kCommands; }

const command_def& commandDef(command_id id) {
    for (const auto& c : kCommands)
        if (c.id == id) return c;
    return kCommands[0];
}

std::span<const char* const> fullMenuTitles() { return kFullMenus; }
std::span<const char* const> shortMenuTitles() { return kShortMenus; }

}  // namespace sb
