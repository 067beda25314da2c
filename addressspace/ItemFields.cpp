#include "addressspace/ItemFields.h"

ItemFields ItemFields::Of(const COPCItem& item)
{
    ItemFields fields;
    fields.name = item.Name();
    fields.accessRights = item.AccessRights();
    fields.scanRate = item.ScanRate();
    fields.archive = item.Archive();
    fields.dataType = item.CanonicalDataType();
    fields.value = item.Value();
    fields.quality = item.Quality();
    fields.valueTime = item.ValueTime();
    return fields;
}

void ItemFields::ApplyTo(COPCItem& item) const
{
    if (!name.empty())
        item.Rename(name.c_str());
    item.SetAccessRights(accessRights);
    item.SetScanRate(scanRate);
    item.SetArchive(archive);
    item.SetCanonicalDataType(dataType);
    item.SetValue(value);
    item.SetQuality(quality);
    item.SetValueTime(valueTime);
}
