<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="zh_CN" sourcelanguage="en">
<context>
    <name>Backups</name>
    <message>
        <source>Backup</source>
        <translation>备份</translation>
    </message>
    <message>
        <source>Cancel</source>
        <translation>取消</translation>
    </message>
    <message>
        <source>It changed while it was being backed up. Back it up again.</source>
        <translation>备份过程中文件被修改，请重新备份。</translation>
    </message>
    <message>
        <source>Backing up %1</source>
        <translation>正在备份 %1</translation>
    </message>
    <message>
        <source>Backing up %1 drawings</source>
        <translation>正在备份 %1 个图纸</translation>
    </message>
</context>
<context>
    <name>MainWindow</name>
    <message>
        <source>Drawings</source>
        <translation>图纸</translation>
    </message>
    <message>
        <source>&amp;Add Drawings...</source>
        <translation>添加图纸(&amp;A)...</translation>
    </message>
    <message>
        <source>Sign &amp;In...</source>
        <translation>登录(&amp;I)...</translation>
    </message>
    <message>
        <source>Sign &amp;Out...</source>
        <translation>退出登录(&amp;O)...</translation>
    </message>
    <message>
        <source>&amp;Back Up to the Cloud</source>
        <translation>备份到云端(&amp;B)</translation>
    </message>
    <message>
        <source>&amp;My Cloud Space</source>
        <translation>我的云空间(&amp;M)</translation>
    </message>
    <message>
        <source>&amp;Quit</source>
        <translation>退出程序(&amp;Q)</translation>
    </message>
    <message>
        <source>&amp;File</source>
        <translation>文件(&amp;F)</translation>
    </message>
    <message>
        <source>&amp;Cloud</source>
        <translation>云(&amp;C)</translation>
    </message>
    <message>
        <source>Tools</source>
        <translation>工具栏</translation>
    </message>
    <message>
        <source>Drawing</source>
        <translation>图纸</translation>
    </message>
    <message>
        <source>Folder</source>
        <translation>文件夹</translation>
    </message>
    <message>
        <source>Backed up</source>
        <translation>备份时间</translation>
    </message>
    <message>
        <source>Add drawings by the tool bar, or drop them here.</source>
        <translation>请用工具栏添加图纸，或将图纸拖放到此处。</translation>
    </message>
    <message>
        <source>Signed in as %1</source>
        <translation>已登录：%1</translation>
    </message>
    <message>
        <source>Not signed in</source>
        <translation>未登录</translation>
    </message>
    <message>
        <source>These files cannot be read:

%1</source>
        <translation>无法读取以下文件：

%1</translation>
    </message>
    <message>
        <source>Add Drawings</source>
        <translation>添加图纸</translation>
    </message>
    <message>
        <source>Drawings (*.dgn *.dwg);;All files (*)</source>
        <translation>图纸 (*.dgn *.dwg);;所有文件 (*)</translation>
    </message>
    <message>
        <source>%1 cannot be read any more.</source>
        <translation>已无法读取 %1。</translation>
    </message>
    <message>
        <source>%1 was not backed up.</source>
        <translation>%1 未能备份。</translation>
    </message>
    <message>
        <source>There is a backup of %1 in the cloud already. Replace it?</source>
        <translation>云端已有 %1 的备份。要替换吗？</translation>
    </message>
    <message>
        <source>%1 is in the cloud.</source>
        <translation>%1 已备份到云端。</translation>
    </message>
    <message>
        <source>%1 exists already. Replace it?</source>
        <translation>%1 已存在。要替换吗？</translation>
    </message>
    <message>
        <source>%1 was not converted.</source>
        <translation>%1 未能转换。</translation>
    </message>
    <message>
        <source>Converted to %1.</source>
        <translation>已转换为 %1。</translation>
    </message>
    <message>
        <source>&amp;Convert...</source>
        <translation>转换(&amp;C)...</translation>
    </message>
    <message>
        <source>Opening your cloud space...</source>
        <translation>正在打开云空间...</translation>
    </message>
    <message>
        <source>Your cloud space was not opened.</source>
        <translation>未能打开云空间。</translation>
    </message>
    <message>
        <source>Backing up %1...</source>
        <translation>正在备份 %1...</translation>
    </message>
    <message>
        <source>Convert</source>
        <translation>转换</translation>
    </message>
    <message>
        <source>Drawings (*.dgn *.dwg)</source>
        <translation>图纸 (*.dgn *.dwg)</translation>
    </message>
    <message>
        <source>%1 is neither a DGN nor a DWG drawing.</source>
        <translation>%1 不是 DGN 或 DWG 图纸。</translation>
    </message>
    <message>
        <source>Converting %1...</source>
        <translation>正在转换 %1...</translation>
    </message>
    <message>
        <source>&amp;Remove from the List</source>
        <translation>从列表中移除(&amp;R)</translation>
    </message>
    <message>
        <source>%1 %</source>
        <translation>%1 %</translation>
    </message>
    <message>
        <source>Drawings are still being backed up. Give that up and close?</source>
        <translation>仍有图纸正在备份。要放弃备份并关闭吗？</translation>
    </message>
    <message>
        <source>Drawings are still being backed up. Give that up and sign out?</source>
        <translation>仍有图纸正在备份。要放弃备份并退出登录吗？</translation>
    </message>
    <message>
        <source>The service says: %1</source>
        <translation>转换服务的说明：%1</translation>
    </message>
    <message>
        <source>%1 was converted, but not all of it has a place in the result. What is missing:</source>
        <translation>%1 已转换，但部分内容无法保留在结果中。缺少：</translation>
    </message>
</context>
</TS>
