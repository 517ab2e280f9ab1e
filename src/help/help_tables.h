#pragma once
// Table numbers of the help file: which parameter file a name belongs to.
// The same name can mean different things in different files (the site and
// fixed files share none with the option files, but the option files share
// a few), so every help row names its table.
#include <cstdint>

namespace sb {

enum help_table : int32_t {
    kHelpCrop = 1,          // crop.100
    kHelpCultivation = 2,   // cult.100
    kHelpFertilizer = 3,    // fert.100
    kHelpFire = 4,          // fire.100
    kHelpGraze = 5,         // graz.100
    kHelpHarvest = 6,       // harv.100
    kHelpIrrigation = 7,    // irri.100
    kHelpOmad = 8,          // omad.100
    kHelpTree = 9,          // tree.100
    kHelpTreeRemoval = 10,  // trem.100
    kHelpFixed = 11,        // fix.100
    kHelpSite = 12,         // the site file (<site>.100)
};

}  // namespace sb
