#include "cfg/probe_type.h"

#include <array>

#include "cfg/probe_bmc.h"
#include "cfg/probe_board.h"
#include "cfg/probe_fru.h"
#include "cfg/probe_processor.h"
#include "cfg/probe_sensor.h"

namespace varnok {
namespace {

template <class Probe>
PoolPtr<CCfgProbe> Make() {
  return MakeInPool<Probe>();
}

constexpr std::array kRows{
    ProbeRow{ProbeType::HwId, "HWID", u"CCfgProbeHwId", Make<CCfgProbeHwId>},
    ProbeRow{ProbeType::System, "SYSTEM", u"CCfgProbeSystem", Make<CCfgProbeSystem>},
    ProbeRow{ProbeType::BoardId, "BOARD_ID", u"CCfgProbeBoardId", Make<CCfgProbeBoardId>},
    ProbeRow{ProbeType::Dimm, "DIMM", u"CCfgProbeDimm", Make<CCfgProbeDimm>},
    ProbeRow{ProbeType::BmcConfig, "BMCCONFIG", u"CCfgProbeBmcConfig", Make<CCfgProbeBmcConfig>},
    ProbeRow{ProbeType::Ping, "PING", u"CCfgProbePing", Make<CCfgProbePing>},
    ProbeRow{ProbeType::DeviceId, "DEVICE_ID", u"CCfgProbeDeviceId", Make<CCfgProbeDeviceId>},
    ProbeRow{ProbeType::Processor, "PROCESSOR", u"CCfgProbeProcessor", Make<CCfgProbeProcessor>},
    ProbeRow{ProbeType::ImbDevice, "IMBDEVICE", u"CCfgProbeNvsType", Make<CCfgProbeNvsType>},
    ProbeRow{ProbeType::Ds1624s, "DS1624S", u"CCfgProbeNvsType", Make<CCfgProbeNvsType>},
    ProbeRow{ProbeType::At24c02, "AT24C02", u"CCfgProbeNvsType", Make<CCfgProbeNvsType>},
    ProbeRow{ProbeType::BiosVer, "BIOSVER", u"CCfgProbeBiosVer", Make<CCfgProbeBiosVer>},
    ProbeRow{ProbeType::BmcVer, "BMCVER", u"CCfgProbeBmcVer", Make<CCfgProbeBmcVer>},
    ProbeRow{ProbeType::HscVer, "HSCVER", u"CCfgProbeBmcVer", Make<CCfgProbeBmcVer>},
    ProbeRow{ProbeType::BmcType, "BMC_TYPE", u"CCfgProbeBmcType", Make<CCfgProbeBmcType>},
    ProbeRow{ProbeType::K410vSys, "K410V_SYS", u"CCfgProbeK410V", Make<CCfgProbeK410V>},
    ProbeRow{ProbeType::QrxType, "QRX_TYPE", u"CCfgProbeQRX", Make<CCfgProbeQRX>},
    ProbeRow{ProbeType::ProcessorFamilyModel, "PROCESSOR_FAMILY_MODEL", u"CCfgProbeProcFamMod",
             Make<CCfgProbeProcFamMod>},
    ProbeRow{ProbeType::ProcessorCores, "PROCESSOR_CORES", u"CCfgProbeProcCores", Make<CCfgProbeProcCores>},
    ProbeRow{ProbeType::DiscreteSensor, "DISCRETE_SENSOR", u"CCfgProbeDiscreteSensor",
             Make<CCfgProbeDiscreteSensor>},
    ProbeRow{ProbeType::BaseboardProdId, "BASEBOARD_PRODID", u"CCfgProbeProdId", Make<CCfgProbeProdId>},
    ProbeRow{ProbeType::BaseboardRevId, "BASEBOARD_REVID", u"CCfgProbeRevId", Make<CCfgProbeRevId>},
    ProbeRow{ProbeType::FruField, "FRUFIELD", u"CCfgProbeFru", Make<CCfgProbeFru>},
    ProbeRow{ProbeType::FanSignal, "FAN_SIGNAL", u"CCfgProbeFan", Make<CCfgProbeFan>},
    ProbeRow{ProbeType::ProcessorTdc, "PROCESSOR_TDC", u"CCfgProbeProcessorTdc", Make<CCfgProbeProcessorTdc>},
};
static_assert(kRows.size() == static_cast<std::size_t>(ProbeType::None));

}  // namespace

std::span<const ProbeRow> ProbeRows() {
  return kRows;
}

}  // namespace varnok
