// Reading beacon list files line by line and the beacon's numbers; the satellite names.
#include "utils/devices/Beacons.h"

#include "platform/kivutils/FileAnsi.h"
#include "utils/devices/ScanText.h"

void TBeacon::Reset() {
    name.Empty();
    status.Empty();
    antennaLocation.Empty();
    transmissionFrequency.Empty();
    transmissionRate.Empty();
}

bool TBeacon::GetPosition(double& latitude, double& longitude) {
    int latDegrees = 0, lonDegrees = 0;
    float latMinutes = 0.0f, lonMinutes = 0.0f;
    wchar_t latHemisphere = 0, lonHemisphere = 0;
    // The lists come in three spellings. In the apostrophe form the longitude's minutes
    // carry no mark in the format, so a "15.0' W" there reads the apostrophe as its
    // hemisphere and stays east: the lists of that form were written without it.
    const wchar_t* format = L"%d %f %c;%d %f %c";
    if (antennaLocation.Find(L'\u00B0') >= 0) format = L"%d\u00B0%f' %c;%d\u00B0%f' %c";
    else if (antennaLocation.Find(L'\'') >= 0) format = L"%d %f' %c;%d %f  %c";
    const int read = kiv_scan::Scan(antennaLocation, format,
                                    {latDegrees, latMinutes, latHemisphere, lonDegrees, lonMinutes, lonHemisphere});
    latitude = static_cast<double>(latMinutes) * (1.0 / 60.0) + latDegrees;
    longitude = static_cast<double>(lonMinutes) * (1.0 / 60.0) + lonDegrees;
    if (latHemisphere == L'S') latitude = -latitude;
    if (lonHemisphere == L'W') longitude = -longitude;
    return read == 6;
}

// Deliberately a substring test: "Not Operational" counts as operational too, as the
// screens have always shown it.
bool TBeacon::GetStatus() { return status.Find(L"Operational") >= 0; }

namespace {
double ScanNumber(const CKivStringT& text) {
    float value = 0.0f;
    kiv_scan::Scan(text, L"%f", {value});
    return value;
}
}  // namespace

double TBeacon::GetFrequency() { return ScanNumber(transmissionFrequency); }
double TBeacon::GetBaudRate() { return ScanNumber(transmissionRate); }

namespace {

CKivStringT Rest(const CKivStringT& line, int from) {
    CKivStringT rest = line.Mid(from);
    return rest.Trim();
}

void Store(TBeacon& working, CKivArray<TBeacon*>& beacons) {
    TBeacon* copy = new (std::nothrow) TBeacon(working);
    if (copy) beacons.Add(copy);
    working.Reset();
}

// A name starts the next record. An empty name changes nothing: the fields after it
// still fill the beacon before, which the lists rely on where a name line is blank.
void StartRecord(const CKivStringT& name, TBeacon& working, bool& pending, CKivArray<TBeacon*>& beacons) {
    if (name.IsEmpty()) return;
    if (pending) Store(working, beacons);
    working.name = name;
    pending = true;
}

}  // namespace

bool LoadBeaconsFile(CKivStringT path, CKivArray<TBeacon*>& beacons) {
    CFileAnsi file(path);
    TBeacon working;
    working.country = L"USA";  // the lists began as lists of US beacons
    bool pending = false;
    CKivStringT line;
    while (file.ReadNextNonBlankWCLine(line) > 0) {
        // The value offsets are not all the marker lengths: the files put one blank after
        // "Status:", "Antenna Location:" and "Country:", none after the other two.
        int p;
        if ((p = line.Find(L"<BR><B>")) >= 0) {
            const int end = line.Find(L"</");
            const int first = p + 7;
            // A heading without its closing tag runs to the end of the line.
            CKivStringT name = end < 0 ? line.Mid(first) : line.Mid(first, end - first);
            StartRecord(name.Trim(), working, pending, beacons);
        } else if (line.Find(L"Name:") >= 0) {
            // The name line starts with its marker; its position is not looked at.
            StartRecord(Rest(line, 5), working, pending, beacons);
        } else if ((p = line.Find(L"Status:")) >= 0) {
            working.status = Rest(line, p + 8);
        } else if ((p = line.Find(L"Transmission Rate:")) >= 0) {
            working.transmissionRate = Rest(line, p + 18);
        } else if ((p = line.Find(L"Transmission Frequency:")) >= 0) {
            working.transmissionFrequency = Rest(line, p + 23);
        } else if ((p = line.Find(L"Antenna Location:")) >= 0) {
            working.antennaLocation = Rest(line, p + 18);
        } else if ((p = line.Find(L"Country:")) >= 0) {
            if (pending) {
                Store(working, beacons);
                pending = false;
            }
            working.country = Rest(line, p + 9);
        }
    }
    if (pending) Store(working, beacons);
    return true;
}

void DeleteBeacons(CKivArray<TBeacon*>& beacons) {
    for (TBeacon* beacon : beacons) delete beacon;
    beacons.RemoveAll();
}

// ---- correction satellites ------------------------------------------------------------

OmnistarSats OmniStarSatNameToEnum(CKivStringT const& name) {
    // Longer names first: "AMSC_EAST" also holds "MSC_E".
    static const struct {
        const wchar_t* part;
        OmnistarSats sat;
    } kRecognised[] = {
        {L"EA_SAT", eOmniEaSat},       {L"AP_SAT", eOmniApAmSat},       {L"AM_SAT", eOmniApAmSat},
        {L"AMSC_EAST", eOmniAmscEast}, {L"AMSC_CENTRE", eOmniAmscCentre}, {L"AMSC_WEST", eOmniAmscWest},
        {L"AF_SAT", eOmniAfSat},       {L"MSC_E", eOmniMsvEast},        {L"MSC_C", eOmniMsvCenter},
        {L"MSC_W", eOmniMsvWest},
    };
    for (const auto& entry : kRecognised)
        if (name.Find(entry.part) >= 0) return entry.sat;
    return eOmniUserDefined;
}

CKivStringT OmniStarEnumToSatName(OmnistarSats sat) {
    // Not the inverse of the above: the receiver's names and the shown names differ, and
    // the last four satellites are never reported by name.
    switch (sat) {
    case eOmniEaSat: return L"EA_SAT Lon 25E";
    case eOmniApAmSat: return L"AP_SAT;AM_SAT Lon 108E;97W";
    case eOmniAmscEast: return L"AMSC_EAST Lon 101W";
    case eOmniAmscCentre: return L"AMSC_CENTRE Lon 101W";
    case eOmniAmscWest: return L"AMSC_WEST Lon 101W";
    case eOmniAfSat: return L"AF Sat";
    case eOmniMsvEast: return L"MSV_East";
    case eOmniMsvCenter: return L"MSV_Center";
    case eOmniMsvWest: return L"MSV_West";
    case eOmniIorh: return L"IORH";
    case eOmniAoreh: return L"AOREH";
    case eOmniAorwh: return L"AORWH";
    case eOmniOcsat: return L"OCSAT";
    case eOmniUserDefined: return L"User Defined";
    }
    return L"";
}
