#include "db/table_catalogue.h"

#include <array>

namespace sb {

namespace {

struct catalogue_entry {
    const char* name;
    const char* keyName;  // null: the table is made without any index (and so without a key)
    std::vector<std::string> keyColumns;
    const char* columns;  // runs "TYPE: a, b; TYPE(n): c"; "x(1) to x(4)" spans a subscript range
    row_owner owner;      // what the rows belong to (left out: unclassified, which a test refuses)
    const char* ownerColumn;
};

// Creation order; the position is the table_id. Column names are kept exactly as
// earlier project files hold them, odd spellings included ("Dec4" beside "DEC5(1)",
// "Fraction Of Sand" in Soil Layers but "Fraction of Sand" in Soils).
const catalogue_entry kCatalogue[] = {
    {"Control Records",
     "Primary",
     {"ID"},
     "INTEGER: ID; TEXT(80): Description; SMALLINT: State FIPS, County FIPS; TEXT(5): MLRA; "
     "INTEGER: PSU; SMALLINT: Point; BYTE: Rotation, Tillage, Irrigation; SMALLINT: NRI Crop "
     "1992; INTEGER: Soil ID, Weather ID; SINGLE: Latitude, Longitude; BYTE: Hydric; SINGLE: "
     "AGPPA, AGPPB, ANEREF(1), ANEREF(2), ANEREF(3), ANIMPT, BGPPA, BGPPB, CO2PPM(1), "
     "CO2PPM(2); BYTE: CO2RMP; SINGLE: DAMR(1,1), DAMR(1,2), DAMR(1,3), DAMR(2,1), DAMR(2,2), "
     "DAMR(2,3), DAMRMN(1), DAMRMN(2), DAMRMN(3), DEC1(1), DEC1(2), DEC2(1), DEC2(2), DEC3(1),"
     " DEC3(2), Dec4, Dec5, DEC5(1), DEC5(2), DECK5, DLIGDF, DRESP, EDEPTH, ELITST, ENRICH, "
     "FAVAIL(1), FAVAIL(3), FAVAIL(4), FAVAIL(5), FAVAIL(6), FLEACH(1), FLEACH(2), FLEACH(3), "
     "FLEACH(4), FLEACH(5), FWLOSS(1), FWLOSS(2), FWLOSS(3), FWLOSS(4), FXMCA, FXMCB, FXMXS, "
     "FXNPB, GREMB; BYTE: IDEF; SINGLE: LHZF(1), LHZF(2), LHZF(3), MINLCH, NSNFIX, NTSPM, "
     "OMLECH(1), OMLECH(2), OMLECH(3), P1CO2A(1), P1CO2A(2), P1CO2B(1), P1CO2B(2), P2CO2(1), "
     "P2CO2(2), P3CO2, PABRES, PCEMIC(1,1), PCEMIC(1,2), PCEMIC(1,3), PCEMIC(2,1), "
     "PCEMIC(2,2), PCEMIC(2,3), PCEMIC(3,1), PCEMIC(3,2), PCEMIC(3,3), PCEMIC2(1,1), "
     "PCEMIC2(1,2), PCEMIC2(1,3), PCEMIC2(2,1), PCEMIC2(2,2), PCEMIC2(2,3), PCEMIC2(3,1), "
     "PCEMIC2(3,2), PCEMIC2(3,3), PEFTXA, PEFTXB, PHESP(1), PHESP(2), PHESP(3), PHESP(4), "
     "PLIGST(1), PLIGST(2), PMCO2(1), PMCO2(2), PMNSEC(1), PMNSEC(2), PMNSEC(3), PMNTMP, "
     "PMXBIO, PMXTMP, PPARMN(1), PPARMN(2), PPARMN(3), PPRPTS(1), PPRPTS(2), PPRPTS(3), "
     "PS1CO2(1), PS1CO2(2), PS1S3(1), PS1S3(2), PS2S3(1), PS2S3(2), PSECMN(1), PSECMN(2), "
     "PSECMN(3), PSECOC1, PSECOC2, RAD1P(1,1), RAD1P(2,1), RAD1P(3,1), RAD1P(1,2), RAD1P(2,2),"
     " RAD1P(3,2), RAD1P(1,3), RAD1P(2,3), RAD1P(3,3), RCESTR(1), RCESTR(2), RCESTR(3), "
     "RICTRL, RIINT, RSPLIG, SEED, SPL(1), SPL(2), STRMAX(1), STRMAX(2), TEFF(1), TEFF(2), "
     "TEFF(3), TEFF(4); BIT: TEXEPP(1); SINGLE: TEXEPP(2), TEXEPP(3), TEXEPP(4), TEXEPP(5), "
     "TEXESP(1), TEXESP(3), TMAX, TMELT(1), TMELT(2), TOPT, TSHL, TSHR, VARAT11(1,1), "
     "VARAT11(2,1), VARAT11(3,1), VARAT11(1,2), VARAT11(2,2), VARAT11(3,2), VARAT11(1,3), "
     "VARAT11(2,3), VARAT11(3,3), VARAT12(1,1), VARAT12(2,1), VARAT12(3,1), VARAT12(1,2), "
     "VARAT12(2,2), VARAT12(3,2), VARAT12(1,3), VARAT12(2,3), VARAT12(3,3), VARAT21(1,1), "
     "VARAT21(2,1), VARAT21(3,1), VARAT21(1,2), VARAT21(2,2), VARAT21(3,2), VARAT21(1,3), "
     "VARAT21(2,3), VARAT21(3,3), VARAT22(1,1), VARAT22(2,1), VARAT22(3,1), VARAT22(1,2), "
     "VARAT22(2,2), VARAT22(3,2), VARAT22(1,3), VARAT22(2,3), VARAT22(3,3), VARAT3(1,1), "
     "VARAT3(2,1), VARAT3(3,1), VARAT3(1,2), VARAT3(2,2), VARAT3(3,2), VARAT3(1,3), "
     "VARAT3(2,3), VARAT3(3,3), VLOSSE, VLOSSG, XEFCLTEF; BYTE: Organic Matter Decomposition "
     "Model, Labeling Type; SMALLINT: Labeling Year; BIT: Simulate Microcosm; BYTE: CO2SYS; "
     "SMALLINT: CO2TM(1), CO2TM(2); BYTE: PHSYS; SMALLINT: PHTM; BYTE: STSYS; SMALLINT: "
     "STSTART; SINGLE: STAMT; BYTE: Ninput; SMALLINT: Nstart; BYTE: OMADinput; SMALLINT: "
     "OMADstart; BYTE: WTHINPUT; SMALLINT: WTHSTART; BYTE: Initial System; TEXT(5): Initial "
     "Crop, Initial Tree",
     row_owner::record,
     "ID"},
    {"Site Data",
     "Primary",
     {"ID"},
     "INTEGER: ID; BYTE: IVAUTO, NELEM; SINGLE: EPNFA(1), EPNFA(2), EPNFS(1), EPNFS(2), "
     "SATMOS(1), SATMOS(2), SIRRI, SOM1CI(1,1), SOM1CI(1,2), SOM1CI(2,1), SOM1CI(2,2), "
     "SOM2CI(1,1), SOM2CI(1,2), SOM2CI(2,1), SOM2CI(2,2), SOM3CI(1), SOM3CI(2), RCES1(1,1), "
     "RCES1(1,2), RCES1(1,3), RCES1(2,1), RCES1(2,2), RCES1(2,3), RCES2(1,1), RCES2(1,2), "
     "RCES2(1,3), RCES2(2,1), RCES2(2,2), RCES2(2,3), RCES3(1), RCES3(2), RCES3(3), "
     "CLITTR(1,1), CLITTR(1,2), CLITTR(2,1), CLITTR(2,2), RCELIT(1,1), RCELIT(1,2), "
     "RCELIT(1,3), RCELIT(2,1), RCELIT(2,2), RCELIT(2,3), AGLCIS(1), AGLCIS(2), AGLIVE(1), "
     "AGLIVE(2), AGLIVE(3), BGLCIS(1), BGLCIS(2), BGLIVE(1), BGLIVE(2), BGLIVE(3), STDCIS(1), "
     "STDCIS(2), STDEDE(1), STDEDE(2), STDEDE(3), RLVCIS(1), RLVCIS(2), RLEAVE(1), RLEAVE(2), "
     "RLEAVE(3), FBRCIS(1), FBRCIS(2), FBRCHE(1), FBRCHE(2), FBRCHE(3), RLWCIS(1), RLWCIS(2), "
     "RLWODE(1), RLWODE(2), RLWODE(3), FRTCIS(1), FRTCIS(2), FROOTE(1), FROOTE(2), FROOTE(3), "
     "CRTCIS(1), CRTCIS(2), CROOTE(1), CROOTE(2), CROOTE(3), WD1CIS(1), WD1CIS(2), WD2CIS(1), "
     "WD2CIS(2), WD3CIS(1), WD3CIS(2), W1LIG, W2LIG, W3LIG, PARENT(1), PARENT(2), PARENT(3), "
     "SECNDY(1), SECNDY(2), SECNDY(3), OCCLUD, SNLQ, SNOW, STRCIS(1,1), STRCIS(1,2), "
     "STRCIS(2,1), STRCIS(2,2), METCIS(1,1), METCIS(1,2), METCIS(2,1), METCIS(2,2), "
     "STRUCE(1,1), STRUCE(1,2), STRUCE(1,3), STRUCE(2,1), STRUCE(2,2), STRUCE(2,3), "
     "METABE(1,1), METABE(1,2), METABE(1,3), METABE(2,1), METABE(2,2), METABE(2,3), "
     "SOM1E(1,1), SOM1E(1,2), SOM1E(1,3), SOM1E(2,1), SOM1E(2,2), SOM1E(2,3), SOM2E(1), "
     "SOM2E(2), SOM2E(3), SOM3E(1), SOM3E(2), SOM3E(3), WOOD1E(1), WOOD1E(2), WOOD1E(3), "
     "WOOD2E(1), WOOD2E(2), WOOD2E(3), WOOD3E(1), WOOD3E(2), WOOD3E(3), AMINRL(1), AMINRL(2), "
     "AMINRL(3), CRPSTG(1), CRPSTG(2), CRPSTG(3), STRLIG(1), STRLIG(2); BYTE: TIMSTEP; BIT: "
     "USEXDRVRS; SINGLE: SUBLIMSCALE, REFLEC, ALBEDO, FSWCINIT, DMPFLUX; SMALLINT: HOURS_RAIN,"
     " DRAINLAG; BIT: WATERTABLE(1), WATERTABLE(2), WATERTABLE(3), WATERTABLE(4), "
     "WATERTABLE(5), WATERTABLE(6), WATERTABLE(7), WATERTABLE(8), WATERTABLE(9), "
     "WATERTABLE(10), WATERTABLE(11), WATERTABLE(12); SMALLINT: HPOTDEEP; SINGLE: KSATDEEP; "
     "BYTE: CLDCOV(1), CLDCOV(2), CLDCOV(3), CLDCOV(4), CLDCOV(5), CLDCOV(6), CLDCOV(7), "
     "CLDCOV(8), CLDCOV(9), CLDCOV(10), CLDCOV(11), CLDCOV(12); SINGLE: FRAC_NH4_FERT, "
     "FRAC_NO3_FERT, TBOTMN, TBOTMX, TIMLAG, NCOEFF; BYTE: LYRMIN(1), LYRMAX(1), LYRMIN(2), "
     "LYRMAX(2), LYRMIN(3), LYRMAX(3), LYRMIN(4), LYRMAX(4); SMALLINT: JDAYSTART, JDAYEND; "
     "SINGLE: N2OADJ, N2Oadjust_fc, N2Oadjust_wp, Maximum Daily Nitrification, Snow Effect "
     "Soil Surface Temp, NO3 Mineralization, wfpsdnitadj, n2n2oadj",
     row_owner::record,
     "ID"},
    {"Events",
     "ByID",
     {"ID", "Block Number", "Order"},
     "INTEGER: ID; SMALLINT: Block Number, Order, Year; BYTE: Month, Day, Type; TEXT(20): "
     "Item; SINGLE: Parameter 1, Parameter 2",
     row_owner::record,
     "ID"},
    {"Event Blocks",
     "Primary",
     {"ID", "Block Number"},
     "INTEGER: ID; SMALLINT: Block Number; TEXT(80): Description; SMALLINT: First Year, Last "
     "Year, Repeating Years, Output Starting Year; BYTE: Output Month; SINGLE: Output "
     "Interval; BYTE: Weather Choice; INTEGER: Weather ID",
     row_owner::record,
     "ID"},
    {"Output",
     "Primary",
     {"ID"},
     "INTEGER: ID; SINGLE: strcis(1,1), strcis(1,2), strcis(2,1), strcis(2,2), metcis(1,1), "
     "metcis(1,2), metcis(2,1), metcis(2,2), struce(1,1), struce(1,2), struce(1,3), "
     "struce(2,1), struce(2,2), struce(2,3), metabe(1,1), metabe(1,2), metabe(1,3), "
     "metabe(2,1), metabe(2,2), metabe(2,3), som1e(1,1), som1e(1,2), som1e(1,3), som1e(2,1), "
     "som1e(2,2), som1e(2,3), som2e(1), som2e(2), som2e(3), som3e(1), som3e(2), som3e(3), "
     "wood1e(1), wood1e(2), wood1e(3), wood2e(1), wood2e(2), wood2e(3), wood3e(1), wood3e(2), "
     "wood3e(3), aminrl(1), aminrl(2), aminrl(3), crpstg(1), crpstg(2), crpstg(3), strlig(1), "
     "strlig(2), cproda, bglcis(1), bglcis(2), bglive(1), bglive(2), bglive(3), occlud, "
     "parent(1), parent(2), parent(3), rcelit(1,1), rcelit(1,2), rcelit(1,3), rcelit(2,1), "
     "rcelit(2,2), rcelit(2,3), rces1(1,1), rces1(1,2), rces1(1,3), rces1(2,1), rces1(2,2), "
     "rces1(2,3), rces2(1), rces2(2), rces2(3), rces3(1), rces3(2), rces3(3), secndy(1), "
     "secndy(2), secndy(3), snlq, snow, som1ci(1,1), som1ci(1,2), som1ci(2,1), som1ci(2,2), "
     "som2ci(1,1), som2ci(1,2), som2ci(2,1), som2ci(2,2), som3ci(1), som3ci(2), stdcis(1), "
     "stdcis(2), stdede(1), stdede(2), stdede(3), croote(1), croote(2), croote(3), crtcis(1), "
     "crtcis(2), fbrche(1), fbrche(2), fbrche(3), fbrcis(1), fbrcis(2), froote(1), froote(2), "
     "froote(3), frtcis(1), frtcis(2), rleave(1), rleave(2), rleave(3), rlvcis(1), rlvcis(2), "
     "rlwode(1), rlwode(2), rlwode(3), rlwcis(1), rlwcis(2), som1c1(1,1), som1c1(1,2), "
     "som1c1(2,1), som1c1(2,2), w1lig, w2lig, w3lig, wd1cis(1), wd1cis(2), wd2cis(1), "
     "wd2cis(2), wd3cis(1), wd3cis(2)",
     row_owner::record_local,
     "ID"},
    {"Output Annual",
     "Primary",
     {"ID", "Year"},
     "INTEGER: ID; SMALLINT: Year, crpval; SINGLE: agcacc, agcprd, aglcis(1), aglcis(2), "
     "aglcn, aglivc, aglive(1), aglive(2), aglive(3), aminrl(1), aminrl(2), aminrl(3), "
     "avh2o(1), avh2o(2), avh2o(3), bgcacc, bgcjacc, bgcmacc, bgcprd, bgcjprd, bgcmprd, bglcn,"
     " bglcnj, bglcnm, bglivc, bglivcj, bglivcm, cgrain, cinput, clittr(1,1), clittr(2,1), "
     "clittr(1,2), clittr(2,2), cproda, cprodc, cprodf, creta, crootc, eupprd(1), eupprd(2), "
     "eupprd(3), fbrchc, fcprd, fertac(1), fertac(2), fertac(3), frootc, frstc, metabc(1), "
     "metabc(2), petann, prcann, resp(1), resp(2), rleavc, rlwodc, runoff, sclosa, scloss, "
     "sdrema, shrema, som1c(1), som1c(2), som2c(1), som2c(2), som3c, somsc, somtc, somte(1), "
     "stdedc, strmac(1) to strmac(8), strucc(1), strucc(2), tcerat(1), tcrem, tminrl, totc, "
     "totsysc, totsyse(1), totsyse(2), totsyse(3), wdfx, woode(1), woode(2), woode(3), "
     "n2oflux, noflux, n2flux, ch4, nit, ppt",
     row_owner::record_local,
     "ID"},
    {"Output Monthly",
     "Primary",
     {"ID", "Year", "Month"},
     "INTEGER: ID; SMALLINT: Year; BYTE: Month; SMALLINT: crpval; SINGLE: agcacc, agcmth, "
     "agcprd, aglcis(1), aglcis(2), aglcn, aglivc, aglive(1), aglive(2), aglive(3), aminrl(1),"
     " aminrl(2), aminrl(3), avh2o(1), avh2o(2), avh2o(3), bgcacc, bgcjacc, bgcmacc, bgcmth, "
     "bgcjmth, bgcmmth, bgcprd, bgcjprd, bgcmprd, bglcn, bglcnj, bglcnm, bglivc, bglivcj, "
     "bglivcm, cgrain, cinput, clittr(1,1), clittr(2,1), clittr(1,2), clittr(2,2), cproda, "
     "cprodc, cprodf, creta, crootc, eupprd(1), eupprd(2), eupprd(3), fbrchc, fcprd, fcmth, "
     "fertac(1), fertac(2), fertac(3), frootc, frstc, metabc(1), metabc(2), petann, prcann, "
     "resp(1), resp(2), rleavc, rlwodc, runoff, sclosa, scloss, sdrema, shrema, som1c(1), "
     "som1c(2), som2c(1), som2c(2), som3c, somsc, somtc, somte(1), stdedc, strmac(1) to "
     "strmac(8), strucc(1), strucc(2), tcerat(1), tcrem, tminrl, totc, totsysc, totsyse(1), "
     "totsyse(2), totsyse(3), wdfx, woode(1), woode(2), woode(3)",
     row_owner::record_local,
     "ID"},
    {"Output Daily",
     "Primary",
     {"ID", "Year", "Julian Day"},
     "INTEGER: ID; SMALLINT: Year, Julian Day; SINGLE: tmax, tmin, ppt, N2Oflux, NOflux, CH4, "
     "NIT, CO2resp",
     row_owner::record_local,
     "ID"},
    {"Output Soil Layers",
     "Primary",
     {"ID", "Layer Number"},
     "INTEGER: ID; BYTE: Layer Number; SINGLE: Mineral N, Mineral P, Mineral S, Initial "
     "Relative Water Content",
     row_owner::record_local,
     "ID"},
    {"Soil Layers",
     "Primary",
     {"Soil ID", "Layer Number"},
     "INTEGER: Soil ID; BYTE: Layer Number; SMALLINT: Depth; SINGLE: Wilting Point, Field "
     "Capacity, Mineral N, Mineral P, Mineral S, Initial Relative Water Content, Transpiration"
     " Loss Weighing Factor, Bulk Density, TCOEFF, Fraction Of Sand, Fraction Of Clay, Organic"
     " Matter, DELTAMIN, Saturated Conductivity, pH, ECOEFF",
     row_owner::soil,
     "Soil ID"},
    {"Soils",
     "Primary",
     {"Soil ID"},
     "INTEGER: Soil ID; TEXT(50): Name; TEXT(25): Soils 5 ID, Map Unit Symbol; SINGLE: "
     "Fraction of Sand, Fraction of Silt, Fraction of Clay, Fraction of Rock, Bulk Density; "
     "BYTE: Number of Layers, Number of Layers in Top Level; SINGLE: Drain, Base Flow, Storm "
     "Flow, PRECRO, FRACRO; BYTE: SWFlag; SINGLE: pH, Labile P Slope Fraction, Maximum P "
     "Sorption",
     row_owner::soil,
     "Soil ID"},
    {"Weather Averages",
     "Primary",
     {"ID", "Month"},
     "INTEGER: ID; SMALLINT: Month; SINGLE: PRECIP, PRCSTD, PRCSKW, TMN2M, TMX2M",
     row_owner::station,
     "ID"},
    {"Weather Historical Monthly",
     "Primary",
     {"ID", "Year", "Month"},
     "INTEGER: ID; SMALLINT: Year, Month; SINGLE: PRECIP, PRCSTD, PRCSKW, TMN2M, TMX2M, "
     "SOLRAD, RHUMID, WINDSP",
     row_owner::station,
     "ID"},
    {"Weather Historical Daily",
     "Primary",
     {"ID", "Year", "Month", "Day"},
     "INTEGER: ID; SMALLINT: Year, Month, Day; SINGLE: PRECIP, TMN2M, TMX2M, SOLRAD, RHUMID, "
     "WINDSP",
     row_owner::station,
     "ID"},
    {"Weather Stations", "Primary", {"ID"}, "INTEGER: ID; TEXT(80): Description", row_owner::station, "ID"},
    {"Crops",
     "Primary",
     {"Name"},
     "TEXT(20): Name; TEXT(80): Description; SINGLE: prdx(1), prdx(1)4_5, ppdf(1), ppdf(2), "
     "ppdf(3), ppdf(4); BIT: bioflg; SINGLE: biok5, pltmrf, fulcan; BYTE: frtcindx; SINGLE: "
     "frtc(1), frtc(2), frtc(3), frtc(4), frtc(5), cfrtcn(1), cfrtcn(2), cfrtcw(1), cfrtcw(2),"
     " biomax, pramn(1,1), pramn(2,1), pramn(3,1), pramn(1,2), pramn(2,2), pramn(3,2), "
     "pramx(1,1), pramx(2,1), pramx(3,1), pramx(1,2), pramx(2,2), pramx(3,2), prbmn(1,1), "
     "prbmn(2,1), prbmn(3,1), prbmn(1,2), prbmn(2,2), prbmn(3,2), prbmx(1,1), prbmx(2,1), "
     "prbmx(3,1), prbmx(1,2), prbmx(2,2), prbmx(3,2), fligni(1,1), fligni(2,1), fligni(1,2), "
     "fligni(2,2), fligni(1,3), fligni(2,3), himax, hiwsf, himon(1), himon(2), efrgrn(1), "
     "efrgrn(2), efrgrn(3), vlossp, fsdeth(1), fsdeth(2), fsdeth(3), fsdeth(4), fallrt, rdr, "
     "rdrj, rdrm, rdsrfc, rtdtmp, crprtf(1), crprtf(2), crprtf(3), mrtfrac, snfxmx(1), del13c,"
     " co2ipr(1), co2itr(1), co2ice(1,1,1), co2ice(1,1,2), co2ice(1,1,3), co2ice(1,2,1), "
     "co2ice(1,2,2), co2ice(1,2,3), co2irs(1), kmrsp, ckmrspmx(1), ckmrspmx(2), ckmrspmx(3), "
     "cmrspnpp(1), cmrspnpp(2), cmrspnpp(3), cmrspnpp(4), cmrspnpp(5), cmrspnpp(6), cgresp(1),"
     " cgresp(2), cgresp(3), no3pref; BYTE: claypg; SINGLE: cmix, tmpgerm, ddbase, tmpkill, "
     "basetemp(1), basetemp(2), mnddhrv, mxddhrv, curgdys, clsgres, cmxturn, wscoeff(1,1), "
     "wscoeff(1,2), npp2cs(1), sfavail(1)",
     row_owner::option,
     "Name"},
    {"Cultivation",
     "Primary",
     {"Name"},
     "TEXT(20): Name; TEXT(80): Description; SINGLE: cultra(1), cultra(2), cultra(3), "
     "cultra(4), cultra(5), cultra(6), cultra(7), clteff(1), clteff(2), clteff(3), clteff(4)",
     row_owner::option,
     "Name"},
    {"Fertilizer",
     "Primary",
     {"Name"},
     "TEXT(20): Name; TEXT(80): Description; SINGLE: feramt(1), feramt(2), feramt(3), aufert, "
     "ninhib, ninhtm, frac_nh4, frac_no3",
     row_owner::option,
     "Name"},
    {"Fire",
     "Primary",
     {"Name"},
     "TEXT(255): Name, Description; SINGLE: flfrem, fdfrem(1), fdfrem(2), fdfrem(3), "
     "fdfrem(4), fret(1,1), fret(1,2), fret(1,3), fret(1,4), fret(2,1), fret(2,2), fret(2,3), "
     "fret(2,4), fret(3,1), fret(3,2), fret(3,3), fret(3,4), frtsh, fnue(1), fnue(2)",
     row_owner::option,
     "Name"},
    {"Harvest",
     "Primary",
     {"Name"},
     "TEXT(20): Name; TEXT(80): Description; SINGLE: aglrem, bglrem, hibg, rmvstr, remwsd; "
     "BIT: flghrv",
     row_owner::option,
     "Name"},
    {"Graze",
     nullptr,
     {},
     "TEXT(20): Name; TEXT(80): Description; SINGLE: flgrem, fdgrem, gfcret, gret(1), gret(2),"
     " gret(3); BYTE: grzeff; SINGLE: fecf(1), fecf(2), fecf(3), feclig",
     row_owner::option,
     "Name"},
    {"Irrigation",
     "Primary",
     {"Name"},
     "TEXT(20): Name; TEXT(80): Description; BYTE: auirri; SINGLE: fawhc, irraut, irramt",
     row_owner::option,
     "Name"},
    {"Omad",
     "Primary",
     {"Name"},
     "TEXT(20): Name; TEXT(80): Description; BYTE: omadtyp; SINGLE: astgc, astlbl, astlig, "
     "astrec(1), astrec(2), astrec(3)",
     row_owner::option,
     "Name"},
    {"Trees",
     "Primary",
     {"Name"},
     "TEXT(20): Name; TEXT(80): Description; BYTE: decid; SINGLE: prdx(2), prdx(3), ppdf(1) to"
     " ppdf(4), cerfor(1,1,1) to cerfor(3,5,3), decw1, decw2, decw3, fcfrac(1,1) to "
     "fcfrac(5,1), fcfrac(1,2) to fcfrac(5,2), tfrtcn(1), tfrtcn(2), tfrtcw(1), tfrtcw(2), "
     "leafdr(1) to leafdr(12), btolai, klai, laitop, maxlai, maxldr, forrtf(1) to forrtf(3), "
     "sapk, swold, wdlig(1) to wdlig(6), wooddr(1) to wooddr(6), snfxmx(2), del13c, co2ipr(2),"
     " co2itr(2), co2ice(2,1,1), co2ice(2,1,2), co2ice(2,1,3), co2ice(2,2,1), co2ice(2,2,2), "
     "co2ice(2,2,3), co2irs(2), basfc2, basfct, sitpot, maxnp, kmrsp(1), kmrsp(2), fkmrspmx(1)"
     " to fkmrspmx(6), no3pref(1), no3pref(2); BYTE: tlaypg; SINGLE: tmplff, tmplfs, wrdsrfc, "
     "wmrtfrac, fmrsplai(1) to fmrsplai(6), fgresp(1) to fgresp(6), tmix, furgdys, flsgres, "
     "tmxturn, wscoeff(2,1), wscoeff(2,2), npp2cs(2), sfavail(2)",
     row_owner::option,
     "Name"},
    {"Tree Removal",
     nullptr,
     {},
     "TEXT(20): Name; TEXT(80): Description; BYTE: evntyp; SINGLE: remf(1), remf(2), remf(3), "
     "remf(4), remf(5), fd(1), fd(2), retf(1,1), retf(1,2), retf(1,3), retf(1,4), retf(2,1), "
     "retf(2,2), retf(2,3), retf(2,4), retf(3,1), retf(3,2), retf(3,3), retf(3,4)",
     row_owner::option,
     "Name"},
    // How many times each control record has been saved: a save tells whether
    // another user saved the record since it was read.
    {"Record Changes", "Primary", {"ID"}, "INTEGER: ID, Change Count", row_owner::record_local, "ID"},
    // Ours: one row per run of a record, good or not, with what produced it; it
    // stays with the project the runs were made in. First Error came later:
    // older projects get it (empty in their rows) when opened.
    {"Run History",
     "Primary",
     {"ID", "Started", "Host", "Process ID"},
     "INTEGER: ID; TEXT(24): Started, Ended; TEXT(12): State; TEXT(1000): Message, Run Folder, Model; "
     "TEXT(64): Model SHA256; TEXT(80): Release Profile; TEXT(64): Inputs SHA256; TEXT(80): Soilbench Version; "
     "TEXT(255): Host; INTEGER: Process ID; TEXT(1000): First Error",
     row_owner::record_local,
     "ID"},
    // Ours: records handed to a Slurm job array and not yet brought back, one
    // row each (the job, its array task, the record's run folder), so that a
    // later collect finds them when the submitting process is gone.
    {"Slurm Submissions",
     "Primary",
     {"ID", "Job"},
     "INTEGER: ID, Job, Task; TEXT(1000): Folder; TEXT(24): Submitted; TEXT(255): Host",
     row_owner::record_local,
     "ID"},
    // Values of the model's input files that no column above holds, kept so
    // that a run directory written back carries every value it was read with:
    // per control record (File "fix.100", "site.100", "sitepar.in") ...
    {"Kept Values",
     "Primary",
     {"ID", "File", "Name"},
     "INTEGER: ID; TEXT(20): File; TEXT(40): Name; SINGLE: Value",
     row_owner::record,
     "ID"},
    // ... and per management option (File "crop.100", ...; Option its name).
    {"Kept Option Values",
     "Primary",
     {"File", "Option", "Name"},
     "TEXT(20): File; TEXT(255): Option; TEXT(40): Name; SINGLE: Value",
     row_owner::option,
     "Option"},
    // Further files a set-up's schedule needs beside it (nscale.dat and the
    // like), stored with the record and written into its run directory.
    {"Record Files", "Primary", {"ID", "Name"}, "INTEGER: ID; TEXT(80): Name; MEMO: Content", row_owner::record, "ID"},
};

static_assert(sizeof kCatalogue / sizeof kCatalogue[0] == kTableCount);

std::array<database_maker_table, kTableCount> buildCatalogue() {
    std::array<database_maker_table, kTableCount> tables;
    for (int i = 0; i < kTableCount; ++i) {
        const catalogue_entry& entry = kCatalogue[i];
        std::vector<database_maker_index> keys;
        if (entry.keyName) {
            database_maker_index key;
            key.name = entry.keyName;
            key.primary = key.unique = true;
            key.columns = entry.keyColumns;
            keys.push_back(std::move(key));
        }
        tables[static_cast<size_t>(i)] =
            database_maker_table::fromColumnList(entry.name, entry.columns, std::move(keys));
    }
    return tables;
}

}  // namespace

const char* tableName(table_id id) { return kCatalogue[static_cast<int>(id)].name; }

table_owner tableOwner(table_id id) {
    const catalogue_entry& entry = kCatalogue[static_cast<int>(id)];
    return {entry.owner, entry.ownerColumn ? entry.ownerColumn : ""};
}

bool keepsMissingValues(table_id id) {
    return id == table_id::output || id == table_id::output_annual || id == table_id::output_monthly ||
           id == table_id::output_daily || id == table_id::output_soil_layers;
}

const database_maker_table& tableDef(table_id id) {
    static const std::array<database_maker_table, kTableCount> tables = buildCatalogue();
    return tables[static_cast<size_t>(id)];
}

}  // namespace sb
