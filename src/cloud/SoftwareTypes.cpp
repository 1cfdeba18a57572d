// SPDX-License-Identifier: MIT
#include "cloud/CloudFileManger_p.h"

bool CloudFileManger::getSoftwareAdaptationType()
{
    if (!d->hasProject())
        return false;
    // The double slash is the platform's own path.
    return Call(d).get("/project//softwareAdaptationType/listSupportClient", "sourceClient=" + d->softName);
}

bool CloudFileManger::getSoftwareSupportType()
{
    if (!d->hasProject())
        return false;
    return Call(d).get("/project/softwareSupportType/list");
}

bool CloudFileManger::updateSoftwareAdaptationType(QString supportTypeId, QString targetClient)
{
    return Call(d).postForm("/project/softwareAdaptationType/saveOrUpdate",
        {{"sourceClient", d->softName}, {"supportTypeId", supportTypeId}, {"targetClient", targetClient}});
}

bool CloudFileManger::updateSoftwareSupportType(
    QString title, QString typeFlag, QString typeSuffix, QString typeDescription)
{
    // The adaptation table's path again: the platform tells the two tables apart by the fields.
    return Call(d).postForm("/project/softwareAdaptationType/saveOrUpdate",
        {{"title", title}, {"typeFlag", typeFlag}, {"typeSuffix", typeSuffix},
            {"typeDescription", typeDescription}, {"sourceSoftwareNameEn", d->softName}});
}
