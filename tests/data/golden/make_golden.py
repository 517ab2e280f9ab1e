#!/usr/bin/env python3
"""Expected run-directory files for the golden test record, derived from the
file rules independently of the C++ writers (this script shares no code with
them). It writes record.txt (the record the C++ test loads) and, per version,
the files of v1/ .. v6/. Run it again only when a rule changes on purpose,
and review the diff of the expected files by eye."""
import os

HERE = os.path.dirname(os.path.abspath(__file__))

# ---------------------------------------------------------------- the record
values = {}          # (table, column) -> value, assigned on first use
order = []
counter = [0]

def val(table, column):
    key = (table, column)
    if key not in values:
        counter[0] += 1
        # eighths are exact in float and double alike
        values[key] = 1.0 + counter[0] * 0.125
        order.append(key)
    return values[key]

def fixed(column):
    return val('row', column)

def site(column):
    return val('site', column)

# explicit run-control and integer values
explicit_row = {
    'ID': 42, 'CO2RMP': 1, 'IDEF': 2, 'TEXEPP(1)': 65535, 'Latitude': 40.5, 'Longitude': -105.25,
    'Soil ID': 3, 'Weather ID': 7, 'Labeling Type': 1, 'Labeling Year': 1990,
    'Simulate Microcosm': 0, 'CO2SYS': 1, 'CO2TM(1)': 1950, 'CO2TM(2)': 2000, 'PHSYS': 1,
    'PHTM': 1960, 'STSYS': 0, 'STSTART': 0, 'STAMT': 0, 'Ninput': 2, 'Nstart': 1970,
    'OMADinput': 0, 'OMADstart': 0, 'WTHINPUT': 1, 'WTHSTART': 1980, 'Initial System': 1,
}
explicit_site = {'IVAUTO': 1, 'NELEM': 2, 'USEXDRVRS': 65535, 'HOURS_RAIN': 4, 'DRAINLAG': 1,
                 'HPOTDEEP': -200, 'TIMSTEP': 2, 'JDAYSTART': 5, 'JDAYEND': 300,
                 'Snow Effect Soil Surface Temp': 1, 'TBOTMN': 0.5, 'TBOTMX': 12.25}
for m in range(1, 13):
    explicit_site['WATERTABLE(%d)' % m] = 65535 if m in (3, 4) else 0
    explicit_site['CLDCOV(%d)' % m] = 40 + m
for k, v in explicit_row.items():
    values[('row', k)] = v; order.append(('row', k))
for k, v in explicit_site.items():
    values[('site', k)] = v; order.append(('site', k))

DESCRIPTION = 'Golden record'
INITIAL_CROP = 'C6'
INITIAL_TREE = 'DECID'

soil = {'Fraction of Sand': 0.5, 'Fraction of Silt': 0.25, 'Fraction of Clay': 0.25,
        'Fraction of Rock': 0.125, 'Bulk Density': 1.375, 'Number of Layers': 12,
        'Number of Layers in Top Level': 4, 'Drain': 0.875, 'Base Flow': 0.625, 'Storm Flow': 0.375,
        'PRECRO': 8.0, 'FRACRO': 0.125, 'SWFlag': 1, 'pH': 6.5, 'Labile P Slope Fraction': 0.75,
        'Maximum P Sorption': 10.5}
LAYER_COLUMNS = ['Wilting Point', 'Field Capacity', 'Mineral N', 'Mineral P', 'Mineral S',
                 'Initial Relative Water Content', 'Transpiration Loss Weighing Factor']
layers = []
for n in range(1, 13):
    layer = {'Depth': 10 * n}
    for c, column in enumerate(LAYER_COLUMNS):
        layer[column] = n + (c + 1) * 0.125
    layers.append(layer)

MEANS = []
for m in range(1, 13):
    MEANS.append([m * 1.5, m * 0.25, m * 0.125, m - 5.5, m + 10.25])  # precip prcstd prcskw tmn2m tmx2m

def monthly_history():
    """station -> list of (year, {month: (precip, tmn2m, tmx2m)}) in load order."""
    h = {7: [], 12: []}
    for year in range(1961, 1972):
        months = {m: (year - 1900 + m * 0.5, m - 6.25, m + 14.75) for m in range(1, 13)}
        if year == 1963:
            del months[12]
        h[7].append((year, months))
    for year in (1971, 1972, 1973):
        h[12].append((year, {m: (m * 2.0, -1.5, 20.5) for m in range(1, 13)}))
    return h

def daily_history():
    """station -> list of (year, [(month, day, precip, tmn2m, tmx2m, solrad, rhumid, windsp)])."""
    h = {7: [], 12: []}
    for year in (1961, 1962):
        days = [(1, d, d * 0.5, -2.25 + d, 5.75 + d, 100.5, 60.25, 2.125) for d in (1, 2, 3, 5)]
        h[7].append((year, days))
    h[12].append((1971, [(2, 1, 0.0, -3.5, 4.5, 90.0, 50.0, 1.0)]))
    return h

# (description, first, last, repeats, output start, output month, interval, choice, weather id, events)
# events: (year, month, day, type, item, p1, p2)
ALL_EVENTS = [
    (1, 1, 15, 1, 'C6', 0, 0), (1, 2, 3, 2, '', 0, 0), (1, 3, 31, 3, 'G90', 0, 0),
    (1, 4, 1, 4, '', 0, 0), (1, 5, 20, 5, '', 0, 0), (1, 6, 30, 6, '', 0, 0),
    (2, 7, 4, 7, 'N10', 0, 0), (2, 8, 15, 8, 'A', 0, 0), (2, 9, 9, 9, 'M', 0, 0),
    (2, 10, 10, 10, 'A75', 0, 0), (2, 11, 11, 11, 'GL', 0, 0), (2, 12, 31, 12, '', 0.5, 0.25),
    (3, 1, 1, 13, 'C', 0, 0), (3, 2, 28, 14, 'DECID', 0, 0), (3, 3, 1, 15, 'CLEAR', 0, 0),
    (3, 4, 2, 16, '', 0, 0), (3, 5, 3, 17, '', 0, 0), (3, 6, 4, 18, 'D1', 0, 0),
]
BLOCKS = [
    ('Spin up', 1950, 1960, 3, 1950, 12, 12.0, 1, 0, ALL_EVENTS),
    ('Weather F', 1961, 1965, 1, 1961, 12, 1.0, 3, 7, [(1, 5, 1, 1, 'C6', 0, 0), (1, 9, 30, 3, 'G90', 0, 0)]),
    ('Weather C', 1966, 1970, 1, 1966, 6, 6.0, 4, 7, [(2, 4, 10, 7, 'N10', 0, 0)]),
    ('Other station', 1971, 1972, 2, 1971, 12, 12.0, 3, 12, [(1, 1, 2, 2, '', 0, 0)]),
    ('No events', 1973, 1973, 1, 1973, 12, 12.0, 2, 0, []),
]
OPTION_NAMES = {
    'crop': ['C6', 'G3', 'WHEAT'], 'cultivation': ['A'], 'fertilizer': ['N10'], 'fire': ['C'],
    'graze': ['GL'], 'harvest': ['G90'], 'irrigation': ['A75'], 'omad': ['M'], 'tree': ['DECID'],
    'tree_removal': ['CLEAR'],
}
OUTFILE_FLAGS = [n in (1, 7, 12, 13, 22, 26, 28) for n in range(1, 29)]

# ---------------------------------------------------------------- line forms
def exact(v, decimals):
    """The value with its usual decimals, or as many more as it takes to read
    back as the same 32-bit real (the model reads its inputs as such)."""
    import struct
    single = struct.unpack('f', struct.pack('f', v))[0]
    while True:
        text = '%.*f' % (decimals, v)
        if struct.unpack('f', struct.pack('f', float(text)))[0] == single:
            return text
        decimals += 1

def real(v, name): return '%-10.5f     %s\n' % (v, name)
def smallint(v, name): return '%-2d             %s\n' % (v, name)
def el(v, name, *subs): return '%-10.5f     %s(%s)\n' % (v, name, ','.join(str(s) for s in subs))

def layer_value(n, column):
    return layers[n - 1][column] if n <= len(layers) else 0.0

# ---------------------------------------------------------------- fixed file
def fixed_file(v):
    o = ['X     Fixed_values\n']
    depths = [10, 20, 15, 15, 30, 30, 30, 30, 30, 30]
    for n in range(1, 11):
        o.append(el(depths[n - 1] if v == 4 else layer_value(n, 'Depth'), 'ADEP', n))
    def r(name, column=None): o.append(real(fixed(column or name), name))
    def arr(name, n, column=None):
        for i in range(1, n + 1): o.append(el(fixed('%s(%d)' % (column or name, i)), name, i))
    def rowo(name, rows, cols, column=None):
        for i in range(1, rows + 1):
            for j in range(1, cols + 1): o.append(el(fixed('%s(%d,%d)' % (column or name, i, j)), name, i, j))
    def colo(name, rows, cols, column=None):
        for j in range(1, cols + 1):
            for i in range(1, rows + 1): o.append(el(fixed('%s(%d,%d)' % (column or name, i, j)), name, i, j))
    r('AGPPA'); r('AGPPB'); arr('ANEREF', 3); r('ANIMPT')
    for n in range(1, 11): o.append(el(layer_value(n, 'Transpiration Loss Weighing Factor'), 'AWTL', n))
    r('BGPPA'); r('BGPPB'); arr('CO2PPM', 2); o.append(smallint(values[('row', 'CO2RMP')], 'CO2RMP'))
    rowo('DAMR', 2, 3)
    for i in (1, 2, 3): r('DAMRMN(%d)' % i)
    arr('DEC1', 2); arr('DEC2', 2); arr('DEC3', 2); r('DEC4', 'Dec4')
    if v in (4, 5): arr('DEC5', 2)
    else: r('DEC5', 'Dec5')
    for n in ('DECK5', 'DLIGDF', 'DRESP', 'EDEPTH', 'ELITST', 'ENRICH'): r(n)
    if v != 4: r('FAVAIL(1)')
    for i in (3, 4, 5, 6): r('FAVAIL(%d)' % i)
    arr('FLEACH', 5); arr('FWLOSS', 4)
    for n in ('FXMCA', 'FXMCB', 'FXMXS', 'FXNPB', 'GREMB'): r(n)
    o.append(smallint(values[('row', 'IDEF')], 'IDEF'))
    arr('LHZF', 3)
    for n in ('MINLCH', 'NSNFIX', 'NTSPM'): r(n)
    arr('OMLECH', 3); arr('P1CO2A', 2); arr('P1CO2B', 2)
    if v in (4, 5): arr('P2CO2', 2)
    else: r('P2CO2', 'P2CO2(2)')
    r('P3CO2'); r('PABRES')
    if v == 5: rowo('PCEMIC1', 3, 3, 'PCEMIC'); rowo('PCEMIC2', 3, 3)
    elif v != 4: rowo('PCEMIC', 3, 3)
    r('PEFTXA'); r('PEFTXB'); arr('PHESP', 4); arr('PLIGST', 2); arr('PMCO2', 2); arr('PMNSEC', 3)
    for n in ('PMNTMP', 'PMXBIO', 'PMXTMP'): r(n)
    arr('PPARMN', 3); arr('PPRPTS', 3); arr('PS1CO2', 2); arr('PS1S3', 2); arr('PS2S3', 2); arr('PSECMN', 3)
    if v in (3, 4, 5): r('PSECOC1'); r('PSECOC2')
    else: r('PSECOC', 'PSECOC1')
    colo('RAD1P', 3, 3); arr('RCESTR', 3)
    for n in ('RICTRL', 'RIINT', 'RSPLIG', 'SEED'): r(n)
    arr('SPL', 2); arr('STRMAX', 2)
    o.append(el(1.0 if values[('row', 'TEXEPP(1)')] == 65535 else 0.0, 'TEXEPP', 1))
    for i in range(2, 6): o.append(el(fixed('TEXEPP(%d)' % i), 'TEXEPP', i))
    r('TEXESP(1)'); r('TEXESP(3)')
    # TEFF(4) is non-zero: the four-value temperature form
    r('TEFF(1)'); r('TEFF(2)'); r('TEFF(3)'); r('TEFF(4)')
    arr('TMELT', 2)
    if v == 4: colo('VARAT11', 3, 3); colo('VARAT12', 3, 3)
    else:
        colo('VARAT1', 3, 3, 'VARAT12')
        if v != 5: colo('VARAT2', 3, 3, 'VARAT22')
    if v in (4, 5): colo('VARAT21', 3, 3); colo('VARAT22', 3, 3)
    colo('VARAT3', 3, 3)
    r('VLOSSE'); r('VLOSSG')
    if v == 1: r('XEFCLTEF')
    return ''.join(o)

# ---------------------------------------------------------------- site file
def site_file(v):
    o = ['X  Archived site file record. ID=42\n', '*** Climate parameters\n']
    for s, name in enumerate(('PRECIP', 'PRCSTD', 'PRCSKW', 'TMN2M', 'TMX2M')):
        for m in range(1, 13): o.append(el(MEANS[m - 1][s], name, m))
    o.append('*** Site and control parameters\n')
    def sr(name): o.append(real(site(name) if ('site', name) not in values else values[('site', name)], name))
    def sarr(name, n):
        for i in range(1, n + 1): o.append(el(site('%s(%d)' % (name, i)), name, i))
    def s2(name, rows, cols):
        for i in range(1, rows + 1):
            for j in range(1, cols + 1): o.append(el(site('%s(%d,%d)' % (name, i, j)), name, i, j))
    sr('IVAUTO'); sr('NELEM')
    o.append(real(values[('row', 'Latitude')], 'SITLAT')); o.append(real(values[('row', 'Longitude')], 'SITLNG'))
    o.append(real(soil['Fraction of Sand'], 'SAND')); o.append(real(soil['Fraction of Silt'], 'SILT'))
    o.append(real(soil['Fraction of Clay'], 'CLAY'))
    if v in (3, 4, 5): o.append(real(soil['Fraction of Rock'], 'ROCK'))
    o.append(real(soil['Bulk Density'], 'BULKD'))
    o.append(smallint(9 if v == 4 else soil['Number of Layers'], 'NLAYER'))
    o.append(smallint(soil['Number of Layers in Top Level'], 'NLAYPG'))
    o.append(real(soil['Drain'], 'DRAIN')); o.append(real(soil['Base Flow'], 'BASEF'))
    o.append(real(soil['Storm Flow'], 'STORMF'))
    if v in (3, 4, 5): o.append(real(soil['PRECRO'], 'PRECRO')); o.append(real(soil['FRACRO'], 'FRACRO'))
    o.append(smallint(soil['SWFlag'], 'SWFLAG'))
    for n in range(1, 11): o.append(el(layer_value(n, 'Wilting Point'), 'AWILT', n))
    for n in range(1, 11): o.append(el(layer_value(n, 'Field Capacity'), 'AFIEL', n))
    o.append(real(soil['pH'], 'PH')); o.append(real(soil['Labile P Slope Fraction'], 'PSLSRB'))
    o.append(real(soil['Maximum P Sorption'], 'SORPMX'))
    o.append('*** External nutrient input parameters\n')
    sarr('EPNFA', 2); sarr('EPNFS', 2); sarr('SATMOS', 2); sr('SIRRI')
    o.append('*** Organic matter initial values\n')
    s2('SOM1CI', 2, 2)
    if v in (4, 5): s2('SOM2CI', 2, 2)
    else:
        for j in (1, 2): o.append(real(site('SOM2CI(1,%d)' % j), 'SOM2CI(%d)' % j))
    sarr('SOM3CI', 2); s2('RCES1', 2, 3)
    if v in (4, 5): s2('RCES2', 2, 3)
    else:
        for j in (1, 2, 3): o.append(real(site('RCES2(1,%d)' % j), 'RCES2(%d)' % j))
    sarr('RCES3', 3); s2('CLITTR', 2, 2); s2('RCELIT', 2, 3)
    for name, n in (('AGLCIS', 2), ('AGLIVE', 3), ('BGLCIS', 2), ('BGLIVE', 3), ('STDCIS', 2), ('STDEDE', 3)):
        sarr(name, n)
    o.append('*** Forest organic matter initial parameters\n')
    for name, n in (('RLVCIS', 2), ('RLEAVE', 3), ('FBRCIS', 2), ('FBRCHE', 3), ('RLWCIS', 2), ('RLWODE', 3),
                    ('FRTCIS', 2), ('FROOTE', 3), ('CRTCIS', 2), ('CROOTE', 3), ('WD1CIS', 2), ('WD2CIS', 2),
                    ('WD3CIS', 2)):
        sarr(name, n)
    if v in (1, 2, 6): sr('W1LIG'); sr('W2LIG'); sr('W3LIG')
    o.append('*** Mineral initial parameters\n')
    for k, column in ((1, 'Mineral N'), (2, 'Mineral P'), (3, 'Mineral S')):
        for n in range(1, 11): o.append(el(layer_value(n, column), 'MINERL', n, k))
    sarr('PARENT', 3); sarr('SECNDY', 3); sr('OCCLUD')
    o.append('*** water initial parameters\n')
    for n in range(1, 11): o.append(el(layer_value(n, 'Initial Relative Water Content'), 'RWCF', n))
    sr('SNLQ'); sr('SNOW')
    if v == 1:
        o.append('*** Enhanced extend parameters\n')
        s2('STRCIS', 2, 2); s2('METCIS', 2, 2); s2('STRUCE', 2, 3); s2('METABE', 2, 3); s2('SOM1E', 2, 3)
        for name in ('SOM2E', 'SOM3E', 'WOOD1E', 'WOOD2E', 'WOOD3E', 'AMINRL', 'CRPSTG'): sarr(name, 3)
        sarr('STRLIG', 2)
    return ''.join(o)

# ---------------------------------------------------------------- sitepar.in (version 4)
def sitepar():
    sv = lambda c: values[('site', c)] if ('site', c) in values else site(c)
    o = [smallint(1 if sv('USEXDRVRS') == 65535 else 0,
                  "1 = Use extra weather drivers (solrad, rhumid, windsp), 0 = don't use (for PET)")]
    for c in ('SUBLIMSCALE', 'REFLEC', 'ALBEDO', 'FSWCINIT'): o.append('%-10.5f\n' % sv(c))
    o.append('%-10.6f     DMPFLUX\n' % sv('DMPFLUX'))
    o.append('%-10d\n' % sv('HOURS_RAIN')); o.append('%-10d\n' % sv('DRAINLAG'))
    for m in range(1, 13): o.append('%-2d %d\n' % (m, 1 if sv('WATERTABLE(%d)' % m) == 65535 else 0))
    o.append('%-10d     HPOTDEEP\n' % sv('HPOTDEEP')); o.append(real(sv('KSATDEEP'), 'KSATDEEP'))
    for m in range(1, 13): o.append('%-2d %d\n' % (m, sv('CLDCOV(%d)' % m)))
    o.append((exact(sv('TBOTMN'), 1) + ' ' + exact(sv('TBOTMX'), 1)).ljust(15) +
             'min and max temperature for bottom soil layer (degrees C)\n')
    o.append(real(0.003, 'DMP - damping factor for calculating soil temperature by layer'))
    o.append(real(sv('TIMLAG'), 'TIMLAG - timlag, days from Jan 1 to coolest temp at bottom of soil (days)'))
    o.append(real(sv('NCOEFF'), 'NCOEFF - min water/temperature limitation coefficient for nitrify'))
    o.append(('%d %d' % (sv('JDAYSTART'), sv('JDAYEND'))).ljust(15) +
             'JDAYEND - turn off respiration restraint on denit between these Julian dates\n')
    o.append(real(sv('N2Oadjust_fc'), 'N2Oadjust_fc')); o.append(real(sv('N2Oadjust_wp'), 'N2Oadjust_wp'))
    o.append(real(sv('Maximum Daily Nitrification'), 'MaxNitAmt - maximum daily nitrification amount (gN/m^2)'))
    o.append(smallint(sv('Snow Effect Soil Surface Temp'),
                      'snow effect on soil surface temp: 0 = not insulating, 1 = insulating'))
    o.append(real(sv('NO3 Mineralization'),
                  'Netmn to NO3 - fraction of new net mineralization that goes to NO3 (0.0-1.0)'))
    o.append(real(sv('wfpsdnitadj'), 'wfpsdnitadj')); o.append(real(sv('n2n2oadj'), 'n2n2oadj'))
    return ''.join(o)

# ---------------------------------------------------------------- schedule
COMMANDS = [None, 'CROP', 'PLTM', 'HARV', 'FRST', 'LAST', 'SENM', 'FERT', 'CULT', 'OMAD', 'IRRI', 'GRAZ',
            'EROD', 'FIRE', 'TREE', 'TREM', 'TFST', 'TLST', 'DRAN', 'EXTR']
WITH_ITEM = {1, 3, 7, 8, 9, 10, 11, 13, 14, 15, 18}
DAYS_BEFORE = [0, 31, 59, 90, 120, 151, 181, 212, 243, 273, 304, 334]

def schedule(v):
    R = lambda c: values[('row', c)]
    o = []
    if v >= 3: o.append('#42 %s\n' % DESCRIPTION)
    o.append('%-5d         starting year\n' % min(b[1] for b in BLOCKS))
    o.append('%-5d         Last year\n' % max(b[2] for b in BLOCKS))
    o.append('sbsite.100    Site file name\n')
    o.append('%1d             Labeling type\n' % R('Labeling Type'))
    o.append('%-4d          Labeling year\n' % R('Labeling Year'))
    o.append('%-2d            Microcosm\n' % (1 if R('Simulate Microcosm') == 65535 else -1))
    o.append('%-2d             CO2 Systems\n' % R('CO2SYS'))
    o.append('%-10d\n' % R('CO2TM(1)')); o.append('%-10d\n' % R('CO2TM(2)'))
    if v in (3, 4, 5):
        o.append('%-2d             pH Shift\n' % R('PHSYS')); o.append('%-10d\n' % R('PHTM'))
        o.append('%-10d    Soil warming\n' % -1)
        o.append('%-10d    N input scalar option\n' % R('Ninput'))
        o.append('%-2d             N scalar year\n' % R('Nstart'))
        o.append('%-10d    OMAD input scalar option\n' % 0)
        o.append('%-10d    Climate scalar option\n' % R('WTHINPUT'))
        o.append('%-2d             N scalar year\n' % R('WTHSTART'))
    o.append('%1d             Initial system\n' % R('Initial System'))
    o.append('%-8s      Initial Crop\n' % INITIAL_CROP)
    o.append('%-8s      Initial Tree\n' % INITIAL_TREE)
    o.append('\nYear Month Option\n')
    for number, (desc, first, last, rep, ostart, omonth, interval, choice, wid, events) in enumerate(BLOCKS, 1):
        o.append('%-2d            Block #    %s\n' % (number, desc))
        o.append('%-5d         Last year\n' % last)
        o.append('%-4d          Repeats # years\n' % rep)
        o.append('%-5d         Output starting year\n' % ostart)
        o.append('%-4d          Output Month\n' % omonth)
        if v in (3, 4, 5): o.append('%-5d         Output interval\n' % int(interval))
        else: o.append('%-10.5f    Output interval\n' % (interval / 12.0))
        o.append({1: 'M', 2: 'S', 3: 'F', 4: 'C'}[choice] + '             Weather choice\n')
        if choice == 3: o.append('sb%06d.wth\n' % wid)
        for (year, month, day, typ, item, p1, p2) in events:
            if v == 4: o.append('%04d %03d' % (year, DAYS_BEFORE[month - 1] + day))
            else: o.append('%02d  %02d' % (year, month))
            c = COMMANDS[typ]
            if typ == 12:
                if v == 6: o.append(' %s %f %f\n' % (c, p1, p2))
                elif v == 2: o.append(' %s\n%f\n' % (c, p1))
                else: o.append(' %s %f\n' % (c, p1))
            elif typ in WITH_ITEM:
                o.append((' %s\n%s\n' if v == 2 else ' %s %s\n') % (c, item))
            else:
                o.append(' %s\n' % c)
        o.append('-999 -999 X\n')
    return ''.join(o)

# ---------------------------------------------------------------- weather files
def weather(station, v):
    o = []
    if v in (4, 6):
        for (year, days) in daily_history()[station]:
            for counter, (m, d, pr, tmn, tmx, sol, rh, ws) in enumerate(days, 1):
                o.append('%d %d %d %d %.3f %.3f %.3f %.3f %.3f %.3f\n' % (d, m, year, counter, tmx, tmn, pr, sol, rh, ws))
    else:
        for (year, months) in monthly_history()[station]:
            for idx, key in ((0, 'prec'), (1, 'tmin'), (2, 'tmax')):
                o.append('%s  %4d' % (key, year) +
                         ''.join('%7.2f' % (months[m][idx] if m in months else 0.0) for m in range(1, 13)) + '\n')
    return ''.join(o)

def outfiles():
    names = ['bio.out', 'soiln.out', 'soiltavg.out', 'soiltmax.out', 'soiltmin.out', 'stemp_dx.out', 'vswc.out',
             'watrbal.out', 'wfps.out', 'co2.out', 'wflux.out', 'resp.out', 'year_summary.out', 'livec.out',
             'deadc.out', 'soilc.out', 'sysc.out', 'tgmonth.out', 'dN2lyr.out', 'dN2Olyr.out', 'dels.out',
             'dc_sip.csv', 'harvest.csv', 'cflows.out', 'year_cflows.out', 'daily.out', 'nflux.out', 'summary.out']
    descriptions = ['daily above and below ground live carbon', 'daily soil ammonium and nitrate by layer',
                    'daily average soil temperature by layer', 'daily maximum soil temperature by layer',
                    'daily minimum soil temperature by layer', 'daily soil temperature every few cm (HUGE)!',
                    'daily volumetric soilwater content by layer', 'daily water balance',
                    'daily water filled pore space by layer', 'daily CO2 concentrations by layer',
                    'daily water flux through the bottom of soil layers', 'daily respiration',
                    'yearly trace gas fluxes', 'daily live carbon', 'daily dead carbon', 'daily soil carbon',
                    'daily system carbon', 'monthly trace gas fluxes', 'daily denitrification N2 fluxes by layer',
                    'daily denitrification N2O fluxes by layer', 'daily delta 13C/14C values',
                    'daily evap, tran, resp, system C, and NPP', 'state of the system at time of harvest',
                    'daily carbon flows due to decompostion', 'annual accumulators of decomp carbon flows',
                    'daily ET, defac, soil temp, snow, and therm units',
                    'daily trace gases, nitrification, denitrification', 'daily climate, trace gas, and CO resp']
    o = ['Output (0/1)  file_name         description\n']
    for n in range(28):
        o.append('%d             %s# %s\n' % (1 if OUTFILE_FLAGS[n] else 0, names[n].ljust(18), descriptions[n]))
    return ''.join(o)

# ---------------------------------------------------------------- output
def write(path, text, crlf=False):
    with open(path, 'w', newline='') as f:
        f.write(text.replace('\n', '\r\n') if crlf else text)

for v in range(1, 7):
    d = os.path.join(HERE, 'v%d' % v)
    os.makedirs(d, exist_ok=True)
    write(os.path.join(d, 'sbfix.100' if v == 6 else 'fix.100'), fixed_file(v))
    write(os.path.join(d, 'sbsite.100'), site_file(v))
    write(os.path.join(d, 'sb.evt' if v == 1 else 'sb.sch'), schedule(v))
    write(os.path.join(d, 'sb000007.wth'), weather(7, v))
    write(os.path.join(d, 'sb000012.wth'), weather(12, v))
    if v == 6:
        write(os.path.join(d, 'sb.ini'), 'UserName=Soilbench\nSiteFilesPath=.\\\nMgmtFilesPath=.\\\n'
              'CurrentWorkPath=.\\\nProjectPathsCount=0\n', crlf=True)
    if v == 4:
        write(os.path.join(d, 'sitepar.in'), sitepar())
        write(os.path.join(d, 'outfiles.in'), outfiles())

# the record, for the C++ test to load
lines = ['text\trow\tDescription\t%s\n' % DESCRIPTION, 'text\trow\tInitial Crop\t%s\n' % INITIAL_CROP,
         'text\trow\tInitial Tree\t%s\n' % INITIAL_TREE]
for (table, column) in order:
    lines.append('%s\t%s\t%r\n' % (table, column, float(values[(table, column)])))
for column, value in soil.items():
    lines.append('soil\t%s\t%r\n' % (column, float(value)))
for n, layer in enumerate(layers, 1):
    for column, value in layer.items():
        lines.append('layer\t%d\t%s\t%r\n' % (n, column, float(value)))
for m, row in enumerate(MEANS, 1):
    lines.append('means\t%d\t%s\n' % (m, '\t'.join(repr(float(x)) for x in row)))
for station, years in monthly_history().items():
    for (year, months) in years:
        for m, (pr, tmn, tmx) in sorted(months.items()):
            lines.append('monthly\t%d\t%d\t%d\t%r\t%r\t%r\n' % (station, year, m, pr, tmn, tmx))
for station, years in daily_history().items():
    for (year, days) in years:
        for (m, d, pr, tmn, tmx, sol, rh, ws) in days:
            lines.append('daily\t%d\t%d\t%d\t%d\t%s\n' % (station, year, m, d,
                         '\t'.join(repr(float(x)) for x in (pr, tmn, tmx, sol, rh, ws))))
for number, (desc, first, last, rep, ostart, omonth, interval, choice, wid, events) in enumerate(BLOCKS, 1):
    lines.append('block\t%d\t%s\t%d\t%d\t%d\t%d\t%d\t%r\t%d\t%d\n' %
                 (number, desc, first, last, rep, ostart, omonth, interval, choice, wid))
    for (year, month, day, typ, item, p1, p2) in events:
        lines.append('event\t%d\t%d\t%d\t%d\t%d\t%s\t%r\t%r\n' % (number, year, month, day, typ, item,
                                                                 float(p1), float(p2)))
for kind, names in OPTION_NAMES.items():
    for name in names:
        lines.append('option\t%s\t%s\n' % (kind, name))
lines.append('outfiles\t%s\n' % ''.join('1' if f else '0' for f in OUTFILE_FLAGS))
write(os.path.join(HERE, 'record.txt'), ''.join(lines))
