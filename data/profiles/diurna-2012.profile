# Diurna, the 2012 release: derived from the release's own set-up in ../shared/samples/diurna-2012/inputs (schedule example.sch) and its outputs in ../shared/samples/diurna-2012/outputs.
# See README.md beside this file for the format.

[release]
title = Diurna, the 2012 release
version = 4
output-interval = years-decimal
nlayer = soils.in
weather = day month year doy tmax tmin precip
success = Execution success.
failure = Incorrect number of lines in sitepar.in file.
failure = Soil structures in fix.100 and soils.in are not compatible.
failure = There is an error in your fix.100 file.
failure = run-time error
list-skip = Variable not found, skipping:
binary-layout = version4.tsv
binary-framing = markers
daily-files = summary.out daily.out
annual-files = year_summary.out

[fix.100]
ADEP(1..10) keep = 10.0 20.0 15.0 15.0 30.0 30.0 30.0 30.0 30.0 30.0
AGPPA
AGPPB
ANEREF(1..3)
ANIMPT
AWTL(1..10) keep
BGPPA
BGPPB
CO2PPM(1..2)
CO2RMP
DAMR(1,1..3)
DAMR(2,1..3)
DAMRMN(1..3)
DEC1(1..2)
DEC2(1..2)
DEC3(1..2)
DEC4
DEC5(1..2)
DECK5
DLIGDF
DRESP
EDEPTH
ELITST
ENRICH
FAVAIL(1)
FAVAIL(3..6)
FLEACH(1..5)
FWLOSS(1..4)
FXMCA
FXMCB
FXMXS
FXNPB
GREMB
IDEF
LHZF(1..3)
MINLCH
NSNFIX
NTSPM
OMLECH(1..3)
P1CO2A(1..2)
P1CO2B(1..2)
P2CO2(1..2)
P3CO2
PABRES
PEFTXA
PEFTXB
PHESP(1..4)
PLIGST(1..2)
PMCO2(1..2)
PMNSEC(1..3)
PMNTMP
PMXBIO
PMXTMP
PPARMN(1..3)
PPRPTS(1..3)
PS1CO2(1..2)
PS1S3(1..2)
PS2S3(1..2)
PSECMN(1..3)
PSECOC1
PSECOC2
RAD1P(1..3,1)
RAD1P(1..3,2)
RAD1P(1..3,3)
RCESTR(1..3)
RICTRL
RIINT
RSPLIG
SEED
SPL(1..2)
STRMAX(1..2)
TEXEPP(1..5)
TEXESP(1)
TEXESP(3)
TEFF(1..4)
TMELT(1..2)
VARAT11(1..3,1)
VARAT11(1..3,2)
VARAT11(1..3,3)
VARAT12(1..3,1)
VARAT12(1..3,2)
VARAT12(1..3,3)
VARAT21(1..3,1)
VARAT21(1..3,2)
VARAT21(1..3,3)
VARAT22(1..3,1)
VARAT22(1..3,2)
VARAT22(1..3,3)
VARAT3(1..3,1)
VARAT3(1..3,2)
VARAT3(1..3,3)
VLOSSE
VLOSSG

[site.100]
text *** Climate parameters
PRECIP(1..12)
PRCSTD(1..12)
PRCSKW(1..12)
TMN2M(1..12)
TMX2M(1..12)
text *** Site and control parameters
IVAUTO
NELEM
SITLAT
SITLNG
SAND
SILT
CLAY
ROCK
BULKD
NLAYER
NLAYPG
DRAIN
BASEF
STORMF
PRECRO
FRACRO
SWFLAG
AWILT(1..10) keep
AFIEL(1..10) keep
PH
PSLSRB
SORPMX
text *** External nutrient input parameters
EPNFA(1..2)
EPNFS(1..2)
SATMOS(1..2)
SIRRI
text *** Organic matter initial values
SOM1CI(1,1..2)
SOM1CI(2,1..2)
SOM2CI(1,1..2)
SOM2CI(2,1..2)
SOM3CI(1..2)
RCES1(1,1..3)
RCES1(2,1..3)
RCES2(1,1..3)
RCES2(2,1..3)
RCES3(1..3)
CLITTR(1,1..2)
CLITTR(2,1..2)
RCELIT(1,1..3)
RCELIT(2,1..3)
AGLCIS(1..2)
AGLIVE(1..3)
BGLCIS(1..2)
BGLIVE(1..3)
STDCIS(1..2)
STDEDE(1..3)
text *** Forest organic matter initial parameters
RLVCIS(1..2)
RLEAVE(1..3)
FBRCIS(1..2)
FBRCHE(1..3)
RLWCIS(1..2)
RLWODE(1..3)
FRTCIS(1..2)
FROOTE(1..3)
CRTCIS(1..2)
CROOTE(1..3)
WD1CIS(1..2)
WD2CIS(1..2)
WD3CIS(1..2)
text *** Mineral initial parameters
MINERL(1..10,1) keep
MINERL(1..10,2) keep
MINERL(1..10,3) keep
PARENT(1..3)
SECNDY(1..3)
OCCLUD
text *** Water initial parameters
RWCF(1..10) keep
SNLQ
SNOW

[sitepar.in]
int USEXDRVRS : / 1 = Use extra weather drivers (solrad, rhumid, windsp), 0 = don't use (for PET)
real SUBLIMSCALE : / sublimscale
real REFLEC : / vegetation reflectivity (frac)
real ALBEDO : / albedo (frac) hardwoods = 0.20 spruce = 0.10
real FSWCINIT : / fswcinit - initial swc, fraction of field capacity
real:6 DMPFLUX : / dmpflux - in h2oflux routine (0.000001 = original value)
whole HOURS_RAIN : / hours_rain - duration of each rain event
whole DRAINLAG : / # of days between rainfall event and drainage of soil (-1=computed)
months WATERTABLE : / watertable[month] - 0 = no water table, 1 = water table
whole HPOTDEEP : / hpotdeep - hydraulic water potential of deep storage layer (units?)
real KSATDEEP : / ksatdeep - saturated hydraulic conductivity of deep storage layer (cm/sec)
months CLDCOV : / cldocov[month] - cloud cover (%)
pair TBOTMN TBOTMX : / min and max temperature for bottom soil layer (degrees C)
real DMP keep = 0.003 : / damping factor for calculating soil temperature by layer
real TIMLAG : / timlag, days from Jan 1 to coolest temp at bottom of soil (days)
real NCOEFF : / min water/temperature limitation coefficient for nitrify
pair-int JDAYSTART JDAYEND : / turn off respiration restraint on denit between these Julian dates
real N2OADJ : / nitrification N2O adjustment factor (0.0-1.0)

[outfiles.in]
header Output (0/1)  file_name         description
Outfile1 bio.out daily above and below ground live carbon
Outfile2 soiln.out daily soil ammonium and nitrate by layer
Outfile3 soiltavg.out daily average soil temperature by layer
Outfile4 soiltmax.out daily maximum soil temperature by layer
Outfile5 soiltmin.out daily minimum soil temperature by layer
Outfile6 stemp_dx.out daily soil temperature every few cm (HUGE)!
Outfile7 vswc.out daily volumetric soilwater content by layer
Outfile8 watrbal.out daily water balance
Outfile9 wfps.out daily water filled pore space by layer
Outfile10 co2.out daily CO2 concentrations by layer
Outfile11 wflux.out daily water flux through the bottom of soil layers
Outfile12 mresp.out daily maintenance respiration
Outfile13 year_summary.out yearly trace gas fluxes
Outfile14 livec.out daily live carbon
Outfile15 deadc.out daily dead carbon
Outfile16 soilc.out daily soil carbon
Outfile17 sysc.out daily system carbon
Outfile18 tgmonth.out monthly trace gas fluxes
Outfile19 dN2lyr.out daily denitrification N2 fluxes by layer
Outfile20 dN2Olyr.out daily denitrification N2O fluxes by layer
off gresp.out daily growth respiration
Outfile21 dels.out daily delta 13C/14C values
Outfile22 dc_sip.csv daily evap, tran, resp, system C, and NPP
Outfile23 harvest.csv state of the system at time of harvest
Outfile24 cflows.out daily carbon flows due to decompostion
Outfile25 year_cflows.out annual accumulators of decomp carbon flows

[crop.100]
PRDX(1)
PPDF(1..4)
BIOFLG
BIOK5
PLTMRF
FULCAN
FRTCINDX
FRTC(1..5)
CFRTCN(1..2)
CFRTCW(1..2)
BIOMAX
PRAMN(1..3,1)
PRAMN(1..3,2)
PRAMX(1..3,1)
PRAMX(1..3,2)
PRBMN(1..3,1)
PRBMN(1..3,2)
PRBMX(1..3,1)
PRBMX(1..3,2)
FLIGNI(1..2,1)
FLIGNI(1..2,2)
FLIGNI(1..2,3)
HIMAX
HIWSF
HIMON(1..2)
EFRGRN(1..3)
VLOSSP
FSDETH(1..4)
FALLRT
RDRJ
RDRM
RDSRFC
RTDTMP
CRPRTF(1..3)
MRTFRAC
SNFXMX(1)
DEL13C
CO2IPR
CO2ITR
CO2ICE(1,1,1..3)
CO2ICE(1,2,1..3)
CO2IRS(1)
CKMRSPMX(1..3)
CMRSPNPP(1..6)
CGRESP(1..3)
NO3PREF(1)
CLAYPG
CMIX
TMPGERM
DDBASE
TMPKILL
BASETEMP(1..2)
MNDDHRV
MXDDHRV
CURGDYS
CLSGRES
CMXTURN
NPP2CS(1)

[cult.100]
CULTRA(1..7)
CLTEFF(1..4)

[fert.100]
FERAMT(1..3)
AUFERT
NINHIB
NINHTM
FRAC_NH4
FRAC_NO3

[fire.100]
FLFREM
FDFREM(1..4)
FRET(1,1..4)
FRET(2,1..4)
FRET(3,1..4)
FRTSH
FNUE(1..2)

[graz.100]
FLGREM
FDGREM
GFCRET
GRET(1..3)
GRZEFF
FECF(1..3)
FECLIG

[harv.100]
AGLREM
BGLREM
FLGHRV
RMVSTR
REMWSD
HIBG

[irri.100]
AUIRRI
FAWHC
IRRAUT
IRRAMT

[omad.100]
ASTGC
ASTLBL
ASTLIG
ASTREC(1..3)

[tree.100]
DECID
PRDX(2)
PPDF(1..4)
CERFOR(1,1,1..3)
CERFOR(1,2,1..3)
CERFOR(1,3,1..3)
CERFOR(1,4,1..3)
CERFOR(1,5,1..3)
CERFOR(2,1,1..3)
CERFOR(2,2,1..3)
CERFOR(2,3,1..3)
CERFOR(2,4,1..3)
CERFOR(2,5,1..3)
CERFOR(3,1,1..3)
CERFOR(3,2,1..3)
CERFOR(3,3,1..3)
CERFOR(3,4,1..3)
CERFOR(3,5,1..3)
DECW1
DECW2
DECW3
FCFRAC(1..5,1)
FCFRAC(1..5,2)
TFRTCN(1..2)
TFRTCW(1..2)
LEAFDR(1..12)
BTOLAI
KLAI
LAITOP
MAXLAI
MAXLDR
FORRTF(1..3)
SAPK
SWOLD
WDLIG(1..6)
WOODDR(1..6)
WRDSRFC
WMRTFRAC
SNFXMX(2)
DEL13C
CO2IPR
CO2ITR
CO2ICE(1,1,1..3)
CO2ICE(1,2,1..3)
CO2IRS
BASFC2
BASFCT
SITPOT
MAXNP
FKMRSPMX(1..6)
FMRSPLAI(1..6)
FGRESP(1..6)
NO3PREF(2)
TLAYPG
TMIX
TMPLFF
TMPLFS
FURGDYS
FLSGRES
TMXTURN
NPP2CS(2)

[trem.100]
EVNTYP
REMF(1..5)
FD(1..2)
RETF(1,1..4)
RETF(2,1..4)
RETF(3,1..4)
