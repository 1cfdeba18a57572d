// SPDX-License-Identifier: MIT
#include "cloud/CloudFileManger_p.h"

bool CloudFileManger::getSoftwareAdaptationType()
{
    if (d->projectId.isEmpty())
        return false;
    // The double slash is the platform's own path.
    return d->get("/project//softwareAdaptationType/listSupportClient", "sourceClient=" + d->softName);
}

bool CloudFileManger::getSoftwareSupportType()
{
    if (d->projectId.isEmpty())
        return false;
    return d->get("/project/softwareSupportType/list");
}

bool CloudFileManger::updateSoftwareAdaptationType(QString supportTypeId, QString targetClient)
{
    return d->postForm("/project/softwareAdaptationType/saveOrUpdate",
        {{"sourceClient", d->softName}, {"supportTypeId", supportTypeId}, {"targetClient", targetClient}});
}

bool CloudFileManger::updateSoftwareSupportType(
    QString title, QString typeFlag, QString typeSuffix, QString typeDescription)
{
    // The adaptation table's path again: the platform tells the two tables apart by the fields.
    return d->postForm("/project/softwareAdaptationType/saveOrUpdate",
        {{"title", title}, {"typeFlag", typeFlag}, {"typeSuffix", typeSuffix},
            {"typeDescription", typeDescription}, {"sourceSoftwareNameEn", d->softName}});
}
