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
    ProbeRow{ProbeType::HwId, "HWID", "CCfgProbeHwId", Make<CCfgProbeHwId>},
    ProbeRow{ProbeType::System, "SYSTEM", "CCfgProbeSystem", Make<CCfgProbeSystem>},
    ProbeRow{ProbeType::BoardId, "BOARD_ID", "CCfgProbeBoardId", Make<CCfgProbeBoardId>},
    ProbeRow{ProbeType::Dimm, "DIMM", "CCfgProbeDimm", Make<CCfgProbeDimm>},
    ProbeRow{ProbeType::BmcConfig, "BMCCONFIG", "CCfgProbeBmcConfig", Make<CCfgProbeBmcConfig>},
    ProbeRow{ProbeType::Ping, "PING", "CCfgProbePing", Make<CCfgProbePing>},
    ProbeRow{ProbeType::DeviceId, "DEVICE_ID", "CCfgProbeDeviceId", Make<CCfgProbeDeviceId>},
    ProbeRow{ProbeType::Processor, "PROCESSOR", "CCfgProbeProcessor", Make<CCfgProbeProcessor>},
    ProbeRow{ProbeType::ImbDevice, "IMBDEVICE", "CCfgProbeNvsType", Make<CCfgProbeNvsType>},
    ProbeRow{ProbeType::Ds1624s, "DS1624S", "CCfgProbeNvsType", Make<CCfgProbeNvsType>},
    ProbeRow{ProbeType::At24c02, "AT24C02", "CCfgProbeNvsType", Make<CCfgProbeNvsType>},
    ProbeRow{ProbeType::BiosVer, "BIOSVER", "CCfgProbeBiosVer", Make<CCfgProbeBiosVer>},
    ProbeRow{ProbeType::BmcVer, "BMCVER", "CCfgProbeBmcVer", Make<CCfgProbeBmcVer>},
    ProbeRow{ProbeType::HscVer, "HSCVER", "CCfgProbeBmcVer", Make<CCfgProbeBmcVer>},
    ProbeRow{ProbeType::BmcType, "BMC_TYPE", "CCfgProbeBmcType", Make<CCfgProbeBmcType>},
    ProbeRow{ProbeType::K410vSys, "K410V_SYS", "CCfgProbeK410V", Make<CCfgProbeK410V>},
    ProbeRow{ProbeType::QrxType, "QRX_TYPE", "CCfgProbeQRX", Make<CCfgProbeQRX>},
    ProbeRow{ProbeType::ProcessorFamilyModel, "PROCESSOR_FAMILY_MODEL", "CCfgProbeProcFamMod",
             Make<CCfgProbeProcFamMod>},
    ProbeRow{ProbeType::ProcessorCores, "PROCESSOR_CORES", "CCfgProbeProcCores", Make<CCfgProbeProcCores>},
    ProbeRow{ProbeType::DiscreteSensor, "DISCRETE_SENSOR", "CCfgProbeDiscreteSensor",
             Make<CCfgProbeDiscreteSensor>},
    ProbeRow{ProbeType::BaseboardProdId, "BASEBOARD_PRODID", "CCfgProbeProdId", Make<CCfgProbeProdId>},
    ProbeRow{ProbeType::BaseboardRevId, "BASEBOARD_REVID", "CCfgProbeRevId", Make<CCfgProbeRevId>},
    ProbeRow{ProbeType::FruField, "FRUFIELD", "CCfgProbeFru", Make<CCfgProbeFru>},
    ProbeRow{ProbeType::FanSignal, "FAN_SIGNAL", "CCfgProbeFan", Make<CCfgProbeFan>},
    ProbeRow{ProbeType::ProcessorTdc, "PROCESSOR_TDC", "CCfgProbeProcessorTdc", Make<CCfgProbeProcessorTdc>},
};
static_assert(kRows.size() == static_cast<std::size_t>(ProbeType::None));

}  // namespace

std::span<const ProbeRow> ProbeRows() {
  return kRows;
}

}  // namespace varnok
