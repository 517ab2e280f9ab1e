#!/usr/bin/env python3
"""Writes the demo set-up shipped in data/demo/.

The demo is a made-up site (a continental mid-latitude cropland) with our own
plausible values, written for the demo. The fixed parameters are the
program's own defaults (fix.100 as `soilbench prepare` writes it for a new
project); everything else is generated here, deterministically.

usage: make_demo_setup.py FIX100 SITE_TEMPLATE SITEPAR OUTDIR
"""
import math
import re
import sys

fix_in, site_template, sitepar_in, out = sys.argv[1:5]
FIRST_YEAR, LAST_YEAR = 1990, 2009


def write(name, text):
    with open(f"{out}/{name}", "w", newline="\n") as f:
        f.write(text)


def record(name, description, values):
    lines = [f"{name:<5} {description}\n"]
    for key, value in values:
        lines.append(f"{value:<10.5f}     {key}\n")
    return "".join(lines)


def expand(pairs):
    """('PPDF', [a, b, c, d]) -> PPDF(1)..PPDF(4); scalars stay as they are."""
    for key, value in pairs:
        if isinstance(value, list):
            for i, v in enumerate(value, 1):
                yield f"{key}({i})", v
        else:
            yield key, value


# --- Crops: a C3 winter cereal and a C4 summer cereal --------------------------
CEREAL = [
    ("PRDX(1)", 0.55), ("PPDF", [18.0, 35.0, 1.0, 2.5]), ("BIOFLG", 1), ("BIOK5", 1800.0),
    ("PLTMRF", 1.0), ("FULCAN", 150.0), ("FRTCINDX", 2), ("FRTC", [0.5, 0.1, 90.0, 0.1, 0.1]),
    ("CFRTCN", [0.5, 0.25]), ("CFRTCW", [0.4, 0.2]), ("BIOMAX", 700.0),
    ("PRAMN(1,1)", 20.0), ("PRAMN(2,1)", 390.0), ("PRAMN(3,1)", 340.0),
    ("PRAMN(1,2)", 60.0), ("PRAMN(2,2)", 390.0), ("PRAMN(3,2)", 340.0),
    ("PRAMX(1,1)", 35.0), ("PRAMX(2,1)", 440.0), ("PRAMX(3,1)", 440.0),
    ("PRAMX(1,2)", 80.0), ("PRAMX(2,2)", 440.0), ("PRAMX(3,2)", 440.0),
    ("PRBMN(1,1)", 45.0), ("PRBMN(2,1)", 390.0), ("PRBMN(3,1)", 340.0),
    ("PRBMN(1,2)", 0.0), ("PRBMN(2,2)", 0.0), ("PRBMN(3,2)", 0.0),
    ("PRBMX(1,1)", 60.0), ("PRBMX(2,1)", 420.0), ("PRBMX(3,1)", 420.0),
    ("PRBMX(1,2)", 0.0), ("PRBMX(2,2)", 0.0), ("PRBMX(3,2)", 0.0),
    ("FLIGNI(1,1)", 0.02), ("FLIGNI(2,1)", 0.0012), ("FLIGNI(1,2)", 0.26), ("FLIGNI(2,2)", -0.0015),
    ("FLIGNI(1,3)", 0.26), ("FLIGNI(2,3)", -0.0015),
    ("HIMAX", 0.45), ("HIWSF", 0.3), ("HIMON", [2.0, 1.0]), ("EFRGRN", [0.7, 0.5, 0.5]),
    ("VLOSSP", 0.03), ("FSDETH", [0.0, 0.5, 0.1, 150.0]), ("FALLRT", 0.12),
    ("RDRJ", 0.05), ("RDRM", 0.05), ("RDSRFC", 0.25), ("RTDTMP", 2.0), ("CRPRTF", [0.0, 0.0, 0.0]),
    ("MRTFRAC", 0.05), ("SNFXMX(1)", 0.0), ("DEL13C", -27.0), ("CO2IPR", 1.25), ("CO2ITR", 0.75),
    ("CO2ICE(1,1,1)", 1.3), ("CO2ICE(1,1,2)", 1.0), ("CO2ICE(1,1,3)", 1.0),
    ("CO2ICE(1,2,1)", 1.3), ("CO2ICE(1,2,2)", 1.0), ("CO2ICE(1,2,3)", 1.0), ("CO2IRS", 1.0),
    ("CKMRSPMX", [0.12, 0.05, 0.05]), ("CMRSPNPP", [0.0, 0.25, 1.0, 1.25, 4.0, 1.5]),
    ("CGRESP", [0.23, 0.23, 0.23]), ("NO3PREF(1)", 0.5), ("CLAYPG", 4), ("CMIX", 0.5),
    ("TMPGERM", 5.0), ("DDBASE", 1600.0), ("TMPKILL", -12.0), ("BASETEMP", [0.0, 0.0]),
    ("MNDDHRV", 1200.0), ("MXDDHRV", 1800.0), ("CURGDYS", 40.0), ("CLSGRES", 0.4), ("CMXTURN", 0.05),
    ("WSCOEFF(1,1)", 0.5), ("WSCOEFF(1,2)", 5.0), ("NPP2CS(1)", 0.0), ("SFAVAIL(1)", 0.5),
]
MAIZE_CHANGES = {"PRDX(1)": 0.85, "PPDF(1)": 30.0, "PPDF(2)": 45.0, "HIMAX": 0.5, "DEL13C": -12.5,
                 "TMPGERM": 10.0, "DDBASE": 1500.0, "TMPKILL": -2.0, "BASETEMP(1)": 10.0,
                 "BASETEMP(2)": 30.0, "MNDDHRV": 1300.0, "MXDDHRV": 1700.0, "BIOMAX": 900.0}


def crop(name, description, changes):
    values = [(k, changes.get(k, v)) for k, v in expand(CEREAL)]
    return record(name, description, values)


write("crop.100", crop("WWHT", "Winter wheat (demo values)", {})
      + crop("MAIZ", "Maize (demo values)", MAIZE_CHANGES)
      + crop("CLVR", "Clover cover (demo values)", {"PRDX(1)": 0.4, "SNFXMX(1)": 0.03, "HIMAX": 0.0}))

# --- Management options --------------------------------------------------------
write("cult.100",
      record("K", "Moldboard plough (demo)", expand([("CULTRA", [0.0, 0.9, 0.9, 1.0, 0.9, 0.9, 0.9]),
                                                     ("CLTEFF", [1.5, 1.5, 1.5, 1.5])]))
      + record("R", "Rotary hoe (demo)", expand([("CULTRA", [0.0, 0.3, 0.3, 0.3, 0.3, 0.3, 0.3]),
                                                 ("CLTEFF", [1.2, 1.2, 1.2, 1.2])])))
write("fert.100", "".join(
    record(f"N{amount}", f"{amount} kg N/ha as ammonium nitrate (demo)",
           expand([("FERAMT", [amount / 10.0, 0.0, 0.0]), ("AUFERT", 0.0), ("NINHIB", 0.0),
                   ("NINHTM", 0.0), ("FRAC_NH4", 0.5), ("FRAC_NO3", 0.5)]))
    for amount in (0, 45, 90, 135)))
write("harv.100",
      record("G", "Grain harvest, straw left (demo)", [("AGLREM", 0.0), ("BGLREM", 0.0), ("FLGHRV", 1.0),
                                                      ("RMVSTR", 0.0), ("REMWSD", 0.0), ("HIBG", 0.0)])
      + record("GS", "Grain and straw removed (demo)", [("AGLREM", 0.0), ("BGLREM", 0.0), ("FLGHRV", 1.0),
                                                       ("RMVSTR", 0.8), ("REMWSD", 0.0), ("HIBG", 0.0)]))
write("graz.100", record("GL", "Light grazing (demo)", expand([
    ("FLGREM", 0.1), ("FDGREM", 0.05), ("GFCRET", 0.3), ("GRET", [0.9, 0.5, 0.5]), ("GRZEFF", 1.0),
    ("FECF", [0.5, 0.5, 0.5]), ("FECLIG", 0.25)])))
write("irri.100", record("A75", "Automatic to 75% of field capacity (demo)",
                         [("AUIRRI", 1.0), ("FAWHC", 0.75), ("IRRAUT", 0.0), ("IRRAMT", 0.0)]))
write("omad.100", record("M", "Cattle manure, 1 t C/ha (demo)", expand([
    ("ASTGC", 100.0), ("ASTLBL", 0.0), ("ASTLIG", 0.25), ("ASTREC", [0.05, 0.01, 0.005])])))
write("fire.100", record("C", "Crop residue burn (demo)", expand([
    ("FLFREM", 0.8), ("FDFREM", [0.6, 0.3, 0.0, 0.0]),
    ("FRET(1,1)", 0.0), ("FRET(1,2)", 0.0), ("FRET(1,3)", 0.0), ("FRET(1,4)", 0.0),
    ("FRET(2,1)", 0.2), ("FRET(2,2)", 0.2), ("FRET(2,3)", 0.2), ("FRET(2,4)", 0.2),
    ("FRET(3,1)", 0.1), ("FRET(3,2)", 0.1), ("FRET(3,3)", 0.1), ("FRET(3,4)", 0.1),
    ("FRTSH", 0.1), ("FNUE", [10.0, 30.0])])))
write("tree.100", record("POPL", "Poplar shelterbelt (demo)", [
    ("DECID", 1.0), ("PRDX(2)", 1.2), ("PPDF(1)", 25.0), ("PPDF(2)", 40.0), ("PPDF(3)", 1.0),
    ("PPDF(4)", 3.0), ("BTOLAI", 0.01), ("KLAI", 2000.0), ("LAITOP", -0.47), ("MAXLAI", 6.0),
    ("MAXLDR", 1.0), ("SAPK", 1500.0), ("SWOLD", 0.1), ("DEL13C", -27.0)]))
write("trem.100", record("CLEAR", "Clear cut (demo)", expand([
    ("EVNTYP", 0.0), ("REMF", [1.0, 1.0, 0.9, 0.0, 0.0]), ("FD", [0.0, 0.0])])))

# --- Fixed parameters: the program's defaults -----------------------------------
with open(fix_in) as f:
    write("fix.100", f.read())

# --- Site: climate means, soil, location ---------------------------------------
PRECIP = [1.6, 1.5, 3.9, 5.6, 8.1, 9.0, 8.4, 7.8, 5.3, 3.6, 2.8, 2.0]       # cm per month
TMIN = [-9.5, -7.0, -1.8, 4.2, 10.1, 15.6, 18.3, 17.1, 11.9, 5.0, -1.5, -7.3]  # degrees C
TMAX = [1.8, 4.6, 11.0, 18.4, 24.2, 29.6, 32.1, 30.8, 26.0, 19.2, 10.1, 3.2]
SITE = {
    "IVAUTO": 1, "NELEM": 1, "SITLAT": 40.5, "SITLNG": -98.3, "SAND": 0.20, "SILT": 0.62,
    "CLAY": 0.18, "ROCK": 0.0, "BULKD": 1.3, "NLAYER": 6, "NLAYPG": 4, "DRAIN": 1.0,
    "BASEF": 0.0, "STORMF": 0.0, "PRECRO": 0.0, "FRACRO": 0.0, "SWFLAG": 0, "PH": 6.6,
}
with open(site_template) as f:
    lines = f.read().splitlines(keepends=True)
site = []
for line in lines:
    name = line[15:].strip() if len(line) > 15 else ""
    m = re.match(r"(PRECIP|PRCSTD|PRCSKW|TMN2M|TMX2M)\((\d+)\)$", name)
    if line.startswith("X  "):
        line = "Demo  Demo cropland site, continental mid-latitude (made-up values)\n"
    elif m:
        month = int(m.group(2)) - 1
        value = {"PRECIP": PRECIP[month], "PRCSTD": PRECIP[month] * 0.45, "PRCSKW": 0.8,
                 "TMN2M": TMIN[month], "TMX2M": TMAX[month]}[m.group(1)]
        line = f"{value:<10.5f}     {name}\n"
    elif name in SITE:
        line = f"{SITE[name]:<10.5f}     {name}\n"
    site.append(line)
write("demo-site.100", "".join(site))

# --- Daily site parameters ------------------------------------------------------
with open(sitepar_in) as f:
    sitepar = f.read()
sitepar = sitepar.replace("0.00000        MaxNitAmt", "0.40000        MaxNitAmt")
sitepar = sitepar.replace("0.00000        Netmn to NO3", "0.20000        Netmn to NO3")
write("sitepar.in", sitepar)

# --- Soil: six layers of a silt loam ----------------------------------------------
LAYERS = [  # bottom cm, bulk density, field capacity, wilting point, evap coeff, root fraction, sand, clay, OM
    (10, 1.25, 0.34, 0.14, 0.6, 0.30, 0.20, 0.18, 2.8),
    (20, 1.28, 0.33, 0.14, 0.3, 0.25, 0.20, 0.19, 2.2),
    (30, 1.32, 0.32, 0.15, 0.1, 0.18, 0.19, 0.21, 1.6),
    (45, 1.36, 0.31, 0.16, 0.0, 0.14, 0.18, 0.24, 1.1),
    (60, 1.40, 0.30, 0.17, 0.0, 0.08, 0.18, 0.26, 0.7),
    (90, 1.45, 0.29, 0.17, 0.0, 0.05, 0.17, 0.27, 0.4),
]
soil, top = [], 0
for bottom, bd, fc, wp, ec, rf, sand, clay, om in LAYERS:
    soil.append("%3d.0%4d.0%6.2f%9.5f%9.5f%6.2f%6.2f%6.2f%6.2f%6.2f%6.2f%9.5f%6.2f\n"
                % (top, bottom, bd, fc, wp, ec, rf, sand, clay, om, 0.01, 0.00094, 6.6))
    top = bottom
write("soils.in", "".join(soil))

# --- Daily weather, 1990 to 2010 (the year after the last block year too) --------
state = 12345


def uniform():
    global state
    state = (state * 1103515245 + 12345) % (1 << 31)
    return state / float(1 << 31)


days_in = [31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31]
weather = []
for year in range(FIRST_YEAR, LAST_YEAR + 2):
    leap = year % 4 == 0 and (year % 100 != 0 or year % 400 == 0)
    doy = 0
    for month in range(12):
        n = days_in[month] + (1 if month == 1 and leap else 0)
        wet_days = 4 + PRECIP[month] * 1.2
        for day in range(1, n + 1):
            doy += 1
            season = math.cos(2 * math.pi * (doy - 200) / 365.0)
            noise = (uniform() - 0.5) * 6.0
            tmax = (TMAX[0] + TMAX[6]) / 2 + (TMAX[6] - TMAX[0]) / 2 * season + noise
            tmin = (TMIN[0] + TMIN[6]) / 2 + (TMIN[6] - TMIN[0]) / 2 * season + noise * 0.7
            ppt = 0.0
            if uniform() < wet_days / n:
                ppt = -math.log(max(uniform(), 1e-6)) * PRECIP[month] / wet_days
            weather.append("%d %d %d %d %.2f %.2f %.2f\n" % (day, month + 1, year, doy, tmax, tmin, ppt))
write("demo.wth", "".join(weather))

# --- Schedule ----------------------------------------------------------------------
events = [(90, "CULT", "K"), (105, "CROP", "WWHT"), (105, "PLTM", None), (110, "FRST", None),
          (120, "FERT", "N90"), (200, "LAST", None), (201, "HARV", "G"), (300, "SENM", None)]
sch = [f"#1 Demo cropland\n",
       f"{FIRST_YEAR:<5d}         starting year\n", f"{LAST_YEAR:<5d}         Last year\n",
       "demo-site.100 Site file name\n", "0             Labeling type\n", "-1            Labeling year\n",
       "-1            Microcosm\n", "-1             CO2 Systems\n", "-1             pH Shift\n",
       "-1             Soil warming\n", "0              N input scalar option\n",
       "0              OMAD input scalar option\n", "0              Climate scalar option\n",
       "1             Initial system\n", "WWHT          Initial Crop\n", "              Initial Tree\n",
       "\nYear Month Option\n",
       "1             Block #    Continuous cropping\n", f"{LAST_YEAR:<5d}         Last year\n",
       "1             Repeats # years\n", f"{FIRST_YEAR:<5d}         Output starting year\n",
       "12            Output Month\n", "1             Output interval\n", "F             Weather choice\n",
       "demo.wth\n"]
for doy, command, item in events:
    sch.append(f"0001 {doy:03d} {command}" + (f" {item}" if item else "") + "\n")
sch.append("-999 -999 X\n")
write("demo.sch", "".join(sch))
