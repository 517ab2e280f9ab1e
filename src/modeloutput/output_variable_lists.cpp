// The variables each release's list utility is asked for. The lists are kept
// exactly as the releases expect them: "aglcn" stands twice (both entries are
// requested and both take the same column), list C lacks frootc, crpval and
// bgcacc. Do not tidy them.
#include <sstream>

#include "app/text_format.h"
#include "modeloutput/output_variable_set.h"

namespace sb {

namespace {
std::vector<std::string> splitNames(const char* text) {
    std::vector<std::string> names;
    std::istringstream in(text);
    std::string name;
    while (in >> name) names.push_back(name);
    return names;
}
}  // namespace

const std::vector<std::string>& outputListA() {
    static const std::vector<std::string> names = splitNames(
        "agcacc aglcis(1) aglcis(2) aglcn aglivc aglive(1) aglive(2) aglive(3) aminrl(1) aminrl(2) "
        "aminrl(3) avh2o(1) avh2o(2) avh2o(3) bgcacc cinput clittr(1,1) clittr(2,1) clittr(1,2) "
        "clittr(2,2) cprodc creta crpval sdrema shrema som1c(1) som1c(2) som3c somsc somtc totc "
        "woode(1) woode(2) woode(3) cgrain bglivc stdedc cproda strucc(1) strucc(2) metabc(1) "
        "metabc(2) tcerat(1) aglcn bglcn sclosa scloss petann prcann resp(1) resp(2) wdfx crootc "
        "fbrchc frootc rleavc rlwodc tcrem frstc cprodf");
    return names;
}

const std::vector<std::string>& outputListB() {
    static const std::vector<std::string> names = splitNames(
        "strcis(1,1) strcis(1,2) strcis(2,1) strcis(2,2) metcis(1,1) metcis(1,2) metcis(2,1) "
        "metcis(2,2) struce(1,1) struce(1,2) struce(1,3) struce(2,1) struce(2,2) struce(2,3) "
        "metabe(1,1) metabe(1,2) metabe(1,3) metabe(2,1) metabe(2,2) metabe(2,3) agcacc agcprd "
        "aglcis(1) aglcis(2) aglcn aglivc aglive(1) aglive(2) aglive(3) aminrl(1) aminrl(2) "
        "aminrl(3) avh2o(1) avh2o(2) avh2o(3) bgcacc cinput clittr(1,1) clittr(2,1) clittr(1,2) "
        "clittr(2,2) cprodc creta crpval som1c(1) som1c(2) som3c somsc somtc totc woode(1) "
        "woode(2) woode(3) cgrain bglivc stdedc cproda strucc(1) strucc(2) metabc(1) metabc(2) "
        "tcerat(1) aglcn bglcn sclosa scloss petann prcann resp(1) resp(2) wdfx bgcprd eupprd(1) "
        "eupprd(2) eupprd(3) fertac(1) fertac(2) fertac(3) runoff sdrema shrema strmac(1) "
        "strmac(2) strmac(3) strmac(4) strmac(5) strmac(6) strmac(7) strmac(8) totsysc "
        "totsyse(1) totsyse(2) totsyse(3) crootc fbrchc frootc rleavc rlwodc tcrem frstc cprodf "
        "fcprd");
    return names;
}

const std::vector<std::string>& outputListC() {
    static const std::vector<std::string> names = splitNames(
        "agcacc agcprd aglcis(1) aglcis(2) aglcn aglivc aglive(1) aglive(2) aglive(3) aminrl(1) "
        "aminrl(2) aminrl(3) avh2o(1) avh2o(2) avh2o(3) bgcjacc bgcmacc cinput clittr(1,1) "
        "clittr(2,1) clittr(1,2) clittr(2,2) cprodc creta som1c(1) som1c(2) som2c(1) som2c(2) "
        "som3c somsc somtc totc woode(1) woode(2) woode(3) cgrain bglivcj bglivcm stdedc cproda "
        "strucc(1) strucc(2) metabc(1) metabc(2) tcerat(1) aglcn bglcnj bglcnm sclosa scloss "
        "petann prcann resp(1) resp(2) wdfx bgcjprd bgcmprd eupprd(1) eupprd(2) eupprd(3) "
        "fertac(1) fertac(2) fertac(3) runoff sdrema shrema strmac(1) strmac(2) strmac(3) "
        "strmac(4) strmac(5) strmac(6) strmac(7) strmac(8) totsysc totsyse(1) totsyse(2) "
        "totsyse(3) crootc fbrchc rleavc rlwodc tcrem frstc cprodf fcprd");
    return names;
}

const std::vector<std::string>& outputListD() {
    static const std::vector<std::string> names = [] {
        std::vector<std::string> out;
        for (const char* root : {"bgcjmth", "bgcmmth"})
            for (int month = 1; month <= 12; ++month) out.push_back(strprintf("%s(%d)", root, month));
        return out;
    }();
    return names;
}

}  // namespace sb
