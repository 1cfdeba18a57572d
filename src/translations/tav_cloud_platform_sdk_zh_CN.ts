<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="zh_CN" sourcelanguage="en">
<context>
    <name>AddAltAccountDlg</name>
    <message>
        <source>OK</source>
        <translation>确定</translation>
    </message>
    <message>
        <source>Cancel</source>
        <translation>取消</translation>
    </message>
    <message>
        <source>Name</source>
        <translation>名称</translation>
    </message>
    <message>
        <source>Account</source>
        <translation>账号</translation>
    </message>
    <message>
        <source>Company</source>
        <translation>单位</translation>
    </message>
    <message>
        <source>Error</source>
        <translation>错误</translation>
    </message>
    <message>
        <source>Account cannot be empty!</source>
        <translation>账号不能为空！</translation>
    </message>
</context>
<context>
    <name>AddressBookManageDlg</name>
    <message>
        <source>Remark name</source>
        <translation>备注名</translation>
    </message>
    <message>
        <source>Account</source>
        <translation>账号</translation>
    </message>
    <message>
        <source>Company</source>
        <translation>单位</translation>
    </message>
    <message>
        <source>There is no friend in the address book yet. Press &quot;Add&quot; to add one.</source>
        <translation>通讯录中还没有好友。请点击“添加”进行添加。</translation>
    </message>
    <message>
        <source>Address book Management</source>
        <translation>通讯录管理</translation>
    </message>
    <message>
        <source>Add</source>
        <translation>添加</translation>
    </message>
    <message>
        <source>Delete</source>
        <translation>删除</translation>
    </message>
    <message>
        <source>Edit</source>
        <translation>编辑</translation>
    </message>
    <message>
        <source>Close</source>
        <translation>关闭</translation>
    </message>
    <message>
        <source>Loading the address book...</source>
        <translation>正在加载通讯录...</translation>
    </message>
    <message>
        <source>Failed to load address book form!</source>
        <translation>加载通讯录失败！</translation>
    </message>
    <message>
        <source>Looking for the friend...</source>
        <translation>正在查找好友...</translation>
    </message>
    <message>
        <source>OK</source>
        <translation>确定</translation>
    </message>
    <message>
        <source>Adding the friend...</source>
        <translation>正在添加好友...</translation>
    </message>
    <message>
        <source>Please enter the correct account number!</source>
        <translation>请输入正确的账号！</translation>
    </message>
    <message>
        <source>Change</source>
        <translation>修改</translation>
    </message>
    <message>
        <source>Change exceptions!</source>
        <translation>修改异常！</translation>
    </message>
    <message>
        <source>Changing the friend...</source>
        <translation>正在修改好友...</translation>
    </message>
    <message>
        <source>Prompt</source>
        <translation>提示</translation>
    </message>
    <message>
        <source>Confirm deletion?</source>
        <translation>确认删除？</translation>
    </message>
    <message>
        <source>Cancel</source>
        <translation>取消</translation>
    </message>
    <message>
        <source>Remove exceptions!</source>
        <translation>删除异常！</translation>
    </message>
    <message>
        <source>Deleting the friend...</source>
        <translation>正在删除好友...</translation>
    </message>
    <message>
        <source>The address book could not be loaded.</source>
        <translation>无法加载通讯录。</translation>
    </message>
</context>
<context>
    <name>ChoiceCloudProjectDlg</name>
    <message>
        <source>Cloud Project Name</source>
        <translation>云项目名称</translation>
    </message>
    <message>
        <source>Cloud Project Description</source>
        <translation>云项目描述</translation>
    </message>
    <message>
        <source>Source Client</source>
        <translation>来源客户端</translation>
    </message>
    <message>
        <source>Cloud project ID</source>
        <translation>云项目ID</translation>
    </message>
    <message>
        <source>There is no cloud project yet. Press &quot;Add&quot; to add one.</source>
        <translation>还没有云项目。请点击“添加”进行添加。</translation>
    </message>
    <message>
        <source>Choose Cloud Project</source>
        <translation>选择云项目</translation>
    </message>
    <message>
        <source>Please select a cloud project</source>
        <translation>请选择云项目</translation>
    </message>
    <message>
        <source>Add</source>
        <translation>添加</translation>
    </message>
    <message>
        <source>OK</source>
        <translation>确定</translation>
    </message>
    <message>
        <source>Cancel</source>
        <translation>取消</translation>
    </message>
    <message>
        <source>Loading the cloud projects...</source>
        <translation>正在加载云项目...</translation>
    </message>
    <message>
        <source>The cloud projects could not be loaded.</source>
        <translation>无法加载云项目。</translation>
    </message>
    <message>
        <source>Adding the cloud project...</source>
        <translation>正在添加云项目...</translation>
    </message>
    <message>
        <source>Add cloud project failed!</source>
        <translation>添加云项目失败！</translation>
    </message>
    <message>
        <source>Add cloud project successfully!</source>
        <translation>添加云项目成功！</translation>
    </message>
</context>
<context>
    <name>CloudAccountLogin</name>
    <message>
        <source>The phone number is registered</source>
        <translation>该手机号已注册</translation>
    </message>
</context>
<context>
    <name>CloudFailure</name>
    <message>
        <source>There is no connection to the platform. Check the network.</source>
        <translation>无法连接到平台，请检查网络。</translation>
    </message>
    <message>
        <source>There is no secure connection to the platform. Ask your administrator about its certificate.</source>
        <translation>无法与平台建立安全连接，请向管理员咨询平台的证书。</translation>
    </message>
    <message>
        <source>It took too long. Try again later, or over a faster connection.</source>
        <translation>等待时间过长，请稍后再试，或换用更快的网络。</translation>
    </message>
    <message>
        <source>The connection was cut, or the answer was not the platform&apos;s. Try again.</source>
        <translation>连接已中断，或者收到的不是平台的应答，请重试。</translation>
    </message>
    <message>
        <source>The file could not be written. Check the folder and the room on the disk.</source>
        <translation>无法写入文件，请检查文件夹和磁盘剩余空间。</translation>
    </message>
    <message>
        <source>No cloud project is chosen.</source>
        <translation>尚未选择云项目。</translation>
    </message>
    <message>
        <source>You are signed out. Sign in again.</source>
        <translation>登录已失效，请重新登录。</translation>
    </message>
    <message>
        <source>The platform refused, and gave no reason.</source>
        <translation>平台拒绝了请求，且未说明原因。</translation>
    </message>
    <message>
        <source>It was given up.</source>
        <translation>操作已放弃。</translation>
    </message>
    <message>
        <source>The platform does not give this file: it is no longer there, or not for you.</source>
        <translation>平台不提供该文件：文件已不存在，或您无权获取。</translation>
    </message>
    <message>
        <source>The conversion service did not take the drawing, or its answer was cut.</source>
        <translation>转换服务未能接受该图纸，或其应答中断。</translation>
    </message>
</context>
<context>
    <name>CloudShareTabWidget</name>
    <message>
        <source>%1 Days</source>
        <translation>%1 天</translation>
    </message>
    <message>
        <source>%1 Hours</source>
        <translation>%1 小时</translation>
    </message>
    <message>
        <source>Expiry date</source>
        <translation>有效期</translation>
    </message>
    <message>
        <source>Anonymous share</source>
        <translation>匿名分享</translation>
    </message>
    <message>
        <source>Share To friends</source>
        <translation>分享给好友</translation>
    </message>
    <message>
        <source>Share To groups</source>
        <translation>分享到群组</translation>
    </message>
    <message>
        <source>Select sharing Mode</source>
        <translation>选择分享方式</translation>
    </message>
    <message>
        <source>File</source>
        <translation>文件</translation>
    </message>
    <message>
        <source>File type</source>
        <translation>文件类型</translation>
    </message>
    <message>
        <source>%1 File</source>
        <translation>%1 文件</translation>
    </message>
    <message>
        <source>Browse...</source>
        <translation>浏览...</translation>
    </message>
    <message>
        <source>Choose to Share files</source>
        <translation>选择要分享的文件</translation>
    </message>
    <message>
        <source>Share</source>
        <translation>分享</translation>
    </message>
    <message>
        <source>Paste</source>
        <translation>粘贴</translation>
    </message>
    <message>
        <source>Extract</source>
        <translation>提取</translation>
    </message>
    <message>
        <source>Input extraction code</source>
        <translation>输入提取码</translation>
    </message>
    <message>
        <source>Remark name</source>
        <translation>备注名</translation>
    </message>
    <message>
        <source>Account</source>
        <translation>账号</translation>
    </message>
    <message>
        <source>Company</source>
        <translation>单位</translation>
    </message>
    <message>
        <source>User name</source>
        <translation>用户名</translation>
    </message>
    <message>
        <source>Address book Management</source>
        <translation>通讯录管理</translation>
    </message>
    <message>
        <source>Group name</source>
        <translation>群组名称</translation>
    </message>
    <message>
        <source>Group ID</source>
        <translation>群组ID</translation>
    </message>
    <message>
        <source>Group management</source>
        <translation>群组管理</translation>
    </message>
    <message>
        <source>Loading the address book...</source>
        <translation>正在加载通讯录...</translation>
    </message>
    <message>
        <source>There is nobody in your address book yet.</source>
        <translation>您的通讯录中还没有好友。</translation>
    </message>
    <message>
        <source>The address book could not be loaded.</source>
        <translation>无法加载通讯录。</translation>
    </message>
    <message>
        <source>Friends list</source>
        <translation>好友列表</translation>
    </message>
    <message>
        <source>Failed to query the address book list!</source>
        <translation>查询通讯录失败！</translation>
    </message>
    <message>
        <source>Loading the groups...</source>
        <translation>正在加载群组...</translation>
    </message>
    <message>
        <source>You are in no group yet.</source>
        <translation>您还没有加入任何群组。</translation>
    </message>
    <message>
        <source>The groups could not be loaded.</source>
        <translation>无法加载群组。</translation>
    </message>
    <message>
        <source>Groups</source>
        <translation>群组</translation>
    </message>
    <message>
        <source>Group Query Failure!</source>
        <translation>查询群组失败！</translation>
    </message>
    <message>
        <source>Obtaining the file path</source>
        <translation>选择文件</translation>
    </message>
    <message>
        <source>Please select the file to share first.</source>
        <translation>请先选择要分享的文件。</translation>
    </message>
    <message>
        <source>Invalid file path!</source>
        <translation>文件路径无效！</translation>
    </message>
    <message>
        <source>Could not find the server configuration table number for this file type!</source>
        <translation>找不到该文件类型对应的服务器配置表编号！</translation>
    </message>
    <message>
        <source>Uploading %1...</source>
        <translation>正在上传 %1...</translation>
    </message>
    <message>
        <source>File upload failed!</source>
        <translation>文件上传失败！</translation>
    </message>
    <message>
        <source>Sharing the file...</source>
        <translation>正在分享文件...</translation>
    </message>
    <message>
        <source>Share failed!</source>
        <translation>分享失败！</translation>
    </message>
    <message>
        <source>Fetch Code</source>
        <translation>提取码</translation>
    </message>
    <message>
        <source>The fetch code is copied to the clipboard.</source>
        <translation>提取码已复制到剪贴板。</translation>
    </message>
    <message>
        <source>Extracting the file...</source>
        <translation>正在提取文件...</translation>
    </message>
    <message>
        <source>Fetch Code invalid!</source>
        <translation>提取码无效！</translation>
    </message>
    <message>
        <source>OK</source>
        <translation>确定</translation>
    </message>
    <message>
        <source>Please go to my Cloud space to view the uploaded file.</source>
        <translation>请到“我的云空间”查看已上传的文件。</translation>
    </message>
    <message>
        <source>Choose friends</source>
        <translation>请选择好友</translation>
    </message>
    <message>
        <source>Failed to share file with specified user!</source>
        <translation>分享文件给指定用户失败！</translation>
    </message>
    <message>
        <source>Share successfully!</source>
        <translation>分享成功！</translation>
    </message>
    <message>
        <source>Please choose a group.</source>
        <translation>请选择群组。</translation>
    </message>
    <message>
        <source>The text box is empty.</source>
        <translation>文本框为空。</translation>
    </message>
    <message>
        <source>Extract code invalid!</source>
        <translation>提取码无效！</translation>
    </message>
    <message>
        <source>Ok</source>
        <translation>确定</translation>
    </message>
    <message>
        <source>Extraction successfully! Please go to My Cloud space to view the file</source>
        <translation>提取成功！请到“我的云空间”查看文件</translation>
    </message>
    <message>
        <source>Sharing with %1...</source>
        <translation>正在分享给 %1...</translation>
    </message>
    <message>
        <source>1 Day</source>
        <translation>1 天</translation>
    </message>
</context>
<context>
    <name>CloudSpaceTabWidget</name>
    <message>
        <source>Downloading</source>
        <translation>正在下载</translation>
    </message>
    <message>
        <source>Folder</source>
        <translation>文件夹</translation>
    </message>
    <message>
        <source>back</source>
        <translation>返回</translation>
    </message>
    <message>
        <source>Refresh</source>
        <translation>刷新</translation>
    </message>
    <message>
        <source>Download</source>
        <translation>下载</translation>
    </message>
    <message>
        <source>Loading the cloud space...</source>
        <translation>正在加载云空间...</translation>
    </message>
    <message>
        <source>Not everything could be loaded: %1</source>
        <translation>未能全部加载：%1</translation>
    </message>
    <message>
        <source>This folder is empty.</source>
        <translation>此文件夹为空。</translation>
    </message>
    <message>
        <source>Save path</source>
        <translation>保存路径</translation>
    </message>
    <message>
        <source>The download is complete!</source>
        <translation>下载完成！</translation>
    </message>
    <message>
        <source>OK</source>
        <translation>确定</translation>
    </message>
    <message>
        <source>A file with the same name exists,whether or not covered?</source>
        <translation>存在同名文件，是否覆盖？</translation>
    </message>
    <message>
        <source>Downloading %1...</source>
        <translation>正在下载 %1...</translation>
    </message>
    <message>
        <source>%1 of %2</source>
        <translation>第 %1 个，共 %2 个</translation>
    </message>
    <message>
        <source>%1 of %2, ID %3</source>
        <translation>第 %1 个，共 %2 个，ID %3</translation>
    </message>
    <message>
        <source>Its name in the cloud cannot be the name of a file.</source>
        <translation>云端的名称不能用作文件名。</translation>
    </message>
    <message>
        <source>Not downloaded: %1.</source>
        <translation>未下载：%1。</translation>
    </message>
    <message>
        <source>Cancelled. Files that were downloaded: %1</source>
        <translation>已取消。已下载的文件：%1</translation>
    </message>
    <message>
        <source>Not everything could be downloaded. Try the rest again?</source>
        <translation>未能全部下载。是否重试其余文件？</translation>
    </message>
</context>
<context>
    <name>CreateCloudProjectDlg</name>
    <message>
        <source>Add cloud Project</source>
        <translation>添加云项目</translation>
    </message>
    <message>
        <source>OK</source>
        <translation>确定</translation>
    </message>
    <message>
        <source>Cancel</source>
        <translation>取消</translation>
    </message>
    <message>
        <source>Cloud Project Name</source>
        <translation>云项目名称</translation>
    </message>
    <message>
        <source>Cloud Project Description</source>
        <translation>云项目描述</translation>
    </message>
    <message>
        <source>Cloud project name cannot be empty!</source>
        <translation>云项目名称不能为空！</translation>
    </message>
    <message>
        <source>Cloud project description cannot be empty!</source>
        <translation>云项目描述不能为空！</translation>
    </message>
</context>
<context>
    <name>CreateGroupDlg</name>
    <message>
        <source>Create a group</source>
        <translation>创建群组</translation>
    </message>
    <message>
        <source>Create</source>
        <translation>创建</translation>
    </message>
    <message>
        <source>Cancel</source>
        <translation>取消</translation>
    </message>
    <message>
        <source>Group Name:</source>
        <translation>群组名称：</translation>
    </message>
    <message>
        <source>Group name cannot be empty!</source>
        <translation>群组名称不能为空！</translation>
    </message>
</context>
<context>
    <name>DlgLoginCloundPlatform</name>
    <message>
        <source>Login</source>
        <translation>登录</translation>
    </message>
    <message>
        <source>Login by verification</source>
        <translation>验证码登录</translation>
    </message>
    <message>
        <source>Login by password</source>
        <translation>密码登录</translation>
    </message>
    <message>
        <source>User registration</source>
        <translation>用户注册</translation>
    </message>
    <message>
        <source>Forget the password</source>
        <translation>忘记密码</translation>
    </message>
    <message>
        <source>Exit</source>
        <translation>退出</translation>
    </message>
    <message>
        <source>The phone number cannot be empty!</source>
        <translation>手机号不能为空！</translation>
    </message>
    <message>
        <source>verification code must be filled!</source>
        <translation>验证码不能为空！</translation>
    </message>
    <message>
        <source>login successfully!</source>
        <translation>登录成功！</translation>
    </message>
    <message>
        <source>Username can not be empty!</source>
        <translation>用户名不能为空！</translation>
    </message>
    <message>
        <source>password can not be blank!</source>
        <translation>密码不能为空！</translation>
    </message>
    <message>
        <source>Signing in...</source>
        <translation>正在登录...</translation>
    </message>
</context>
<context>
    <name>DlgLogoutCloundPlatform</name>
    <message>
        <source>Logout</source>
        <translation>退出登录</translation>
    </message>
    <message>
        <source>User login status</source>
        <translation>用户登录状态</translation>
    </message>
    <message>
        <source>Close Window</source>
        <translation>关闭窗口</translation>
    </message>
    <message>
        <source>User name</source>
        <translation>用户名</translation>
    </message>
    <message>
        <source>State</source>
        <translation>状态</translation>
    </message>
    <message>
        <source>Logged-in</source>
        <translation>已登录</translation>
    </message>
    <message>
        <source>exit successfully!</source>
        <translation>退出成功！</translation>
    </message>
    <message>
        <source>Signing out...</source>
        <translation>正在退出登录...</translation>
    </message>
</context>
<context>
    <name>DlgMyCloudSpace</name>
    <message>
        <source>Cloud space</source>
        <translation>云空间</translation>
    </message>
    <message>
        <source>My cloud space</source>
        <translation>我的云空间</translation>
    </message>
    <message>
        <source>Share</source>
        <translation>分享</translation>
    </message>
    <message>
        <source>Loading the cloud space...</source>
        <translation>正在加载云空间...</translation>
    </message>
</context>
<context>
    <name>DlgRegisterR2V</name>
    <message>
        <source>Obtaining verification code</source>
        <translation>获取验证码</translation>
    </message>
    <message>
        <source>User registration</source>
        <translation>用户注册</translation>
    </message>
    <message>
        <source>6-24位数字和英文字母组合</source>
        <translation>6-24位数字和英文字母组合</translation>
    </message>
    <message>
        <source>Cancel</source>
        <translation>取消</translation>
    </message>
    <message>
        <source>User name</source>
        <translation>用户名</translation>
    </message>
    <message>
        <source>Password</source>
        <translation>密码</translation>
    </message>
    <message>
        <source>Phone number/email</source>
        <translation>手机号/邮箱</translation>
    </message>
    <message>
        <source>Verification</source>
        <translation>验证码</translation>
    </message>
    <message>
        <source>The phone number cannot be empty!</source>
        <translation>手机号不能为空！</translation>
    </message>
    <message>
        <source>Username can not be empty!</source>
        <translation>用户名不能为空！</translation>
    </message>
    <message>
        <source>password can not be blank!</source>
        <translation>密码不能为空！</translation>
    </message>
    <message>
        <source>The password cannot have Chinese characters!</source>
        <translation>密码不能包含中文字符！</translation>
    </message>
    <message>
        <source>verification code must be filled!</source>
        <translation>验证码不能为空！</translation>
    </message>
    <message>
        <source>Account registration successfully!</source>
        <translation>账号注册成功！</translation>
    </message>
    <message>
        <source>Registering...</source>
        <translation>正在注册...</translation>
    </message>
</context>
<context>
    <name>DlgResetPassword</name>
    <message>
        <source>Obtaining verification code</source>
        <translation>获取验证码</translation>
    </message>
    <message>
        <source>Reset</source>
        <translation>重置</translation>
    </message>
    <message>
        <source>Reset password</source>
        <translation>重置密码</translation>
    </message>
    <message>
        <source>6-24 digits and English letter combination</source>
        <translation>6-24位数字和英文字母组合</translation>
    </message>
    <message>
        <source>Exit</source>
        <translation>退出</translation>
    </message>
    <message>
        <source>Phone number/email</source>
        <translation>手机号/邮箱</translation>
    </message>
    <message>
        <source>New password</source>
        <translation>新密码</translation>
    </message>
    <message>
        <source>Verification</source>
        <translation>验证码</translation>
    </message>
    <message>
        <source>The phone number cannot be empty!</source>
        <translation>手机号不能为空！</translation>
    </message>
    <message>
        <source>password can not be blank!</source>
        <translation>密码不能为空！</translation>
    </message>
    <message>
        <source>verification code must be filled!</source>
        <translation>验证码不能为空！</translation>
    </message>
    <message>
        <source>Password reset successfully!</source>
        <translation>密码重置成功！</translation>
    </message>
    <message>
        <source>Setting the new password...</source>
        <translation>正在设置新密码...</translation>
    </message>
</context>
<context>
    <name>GroupManageDlg</name>
    <message>
        <source>Group management</source>
        <translation>群组管理</translation>
    </message>
    <message>
        <source>Groups</source>
        <translation>群组</translation>
    </message>
    <message>
        <source>Group operating</source>
        <translation>群组操作</translation>
    </message>
    <message>
        <source>Generating invitation codes</source>
        <translation>生成邀请码</translation>
    </message>
    <message>
        <source>Join the group</source>
        <translation>加入群组</translation>
    </message>
    <message>
        <source>Create group</source>
        <translation>创建群组</translation>
    </message>
    <message>
        <source>Delete the group</source>
        <translation>删除群组</translation>
    </message>
    <message>
        <source>Quit the group</source>
        <translation>退出群组</translation>
    </message>
    <message>
        <source>Removing a group member</source>
        <translation>移除群成员</translation>
    </message>
    <message>
        <source>Close</source>
        <translation>关闭</translation>
    </message>
    <message>
        <source>Loading the groups...</source>
        <translation>正在加载群组...</translation>
    </message>
    <message>
        <source>Failed to query group information!</source>
        <translation>查询群组信息失败！</translation>
    </message>
    <message>
        <source>My groups</source>
        <translation>我的群组</translation>
    </message>
    <message>
        <source>%1(ID:%2)</source>
        <translation>%1(ID:%2)</translation>
    </message>
    <message>
        <source>Failed to query a group member!</source>
        <translation>查询群成员失败！</translation>
    </message>
    <message>
        <source>group manager</source>
        <translation>群主</translation>
    </message>
    <message>
        <source>Looking for the group&apos;s owner...</source>
        <translation>正在查询群主...</translation>
    </message>
    <message>
        <source>The group ID is invalid. Please click to select the group that needs to generate the invitation code.</source>
        <translation>群组ID无效，请点击选择需要生成邀请码的群组。</translation>
    </message>
    <message>
        <source>The current user is not the group owner of the group, and the invitation code cannot be generated!</source>
        <translation>当前用户不是该群组的群主，无法生成邀请码！</translation>
    </message>
    <message>
        <source>Generating the invitation code...</source>
        <translation>正在生成邀请码...</translation>
    </message>
    <message>
        <source>Failed to generate invitation code!</source>
        <translation>生成邀请码失败！</translation>
    </message>
    <message>
        <source>Anonymous share</source>
        <translation>匿名分享</translation>
    </message>
    <message>
        <source>Invitation code:</source>
        <translation>邀请码：</translation>
    </message>
    <message>
        <source>The invitation code is copied to the clipboard.</source>
        <translation>邀请码已复制到剪贴板。</translation>
    </message>
    <message>
        <source>Joining the group...</source>
        <translation>正在加入群组...</translation>
    </message>
    <message>
        <source>Join the group failed!</source>
        <translation>加入群组失败！</translation>
    </message>
    <message>
        <source>Join the group successfully!</source>
        <translation>加入群组成功！</translation>
    </message>
    <message>
        <source>Creating the group...</source>
        <translation>正在创建群组...</translation>
    </message>
    <message>
        <source>Failed to create group!</source>
        <translation>创建群组失败！</translation>
    </message>
    <message>
        <source>Create group successfully!</source>
        <translation>创建群组成功！</translation>
    </message>
    <message>
        <source>The group ID is invalid. Please click to select the group to be deleted.</source>
        <translation>群组ID无效，请点击选择要删除的群组。</translation>
    </message>
    <message>
        <source>No operation permission!</source>
        <translation>没有操作权限！</translation>
    </message>
    <message>
        <source>Do you want to delete this group?</source>
        <translation>是否删除该群组？</translation>
    </message>
    <message>
        <source>Deleting the group...</source>
        <translation>正在删除群组...</translation>
    </message>
    <message>
        <source>Delete failed!</source>
        <translation>删除失败！</translation>
    </message>
    <message>
        <source>Delete successfully!</source>
        <translation>删除成功！</translation>
    </message>
    <message>
        <source>The group ID is invalid. Please click to select the group to exit!</source>
        <translation>群组ID无效，请点击选择要退出的群组！</translation>
    </message>
    <message>
        <source>The current user is the group owner of the group. If you quit the group, you will delete the group. Do you want to quit the group?</source>
        <translation>当前用户是该群组的群主，退出群组将删除该群组。是否退出群组？</translation>
    </message>
    <message>
        <source>Confirm exit?</source>
        <translation>确认退出？</translation>
    </message>
    <message>
        <source>Leaving the group...</source>
        <translation>正在退出群组...</translation>
    </message>
    <message>
        <source>Failed to exit the group!</source>
        <translation>退出群组失败！</translation>
    </message>
    <message>
        <source>Exit group successfully!</source>
        <translation>退出群组成功！</translation>
    </message>
    <message>
        <source>Select a group member.</source>
        <translation>请选择群成员。</translation>
    </message>
    <message>
        <source>Unable to remove group master!</source>
        <translation>无法移除群主！</translation>
    </message>
    <message>
        <source>Removing the group member...</source>
        <translation>正在移除群成员...</translation>
    </message>
    <message>
        <source>Failed to delete a group member!</source>
        <translation>移除群成员失败！</translation>
    </message>
    <message>
        <source>The groups could not be loaded.</source>
        <translation>无法加载群组。</translation>
    </message>
    <message>
        <source>You are in no group yet. Create one, or join one by its invitation code.</source>
        <translation>您还没有加入任何群组。请创建群组，或通过邀请码加入。</translation>
    </message>
</context>
<context>
    <name>JoinGroupDlg</name>
    <message>
        <source>Join group by invitation code</source>
        <translation>通过邀请码加入群组</translation>
    </message>
    <message>
        <source>Please enter the invitation code</source>
        <translation>请输入邀请码</translation>
    </message>
    <message>
        <source>Paste</source>
        <translation>粘贴</translation>
    </message>
    <message>
        <source>Join the group</source>
        <translation>加入群组</translation>
    </message>
    <message>
        <source>Invitation code</source>
        <translation>邀请码</translation>
    </message>
    <message>
        <source>The invitation code cannot be empty.</source>
        <translation>邀请码不能为空。</translation>
    </message>
</context>
<context>
    <name>MessageBoxes</name>
    <message>
        <source>Prompt</source>
        <translation>提示</translation>
    </message>
    <message>
        <source>Error</source>
        <translation>错误</translation>
    </message>
    <message>
        <source>error</source>
        <translation>错误</translation>
    </message>
</context>
<context>
    <name>PhoneLoginWidget</name>
    <message>
        <source>Obtaining verification code</source>
        <translation>获取验证码</translation>
    </message>
    <message>
        <source>Phone number/email</source>
        <translation>手机号/邮箱</translation>
    </message>
    <message>
        <source>Verification</source>
        <translation>验证码</translation>
    </message>
    <message>
        <source>The phone number cannot be empty!</source>
        <translation>手机号不能为空！</translation>
    </message>
    <message>
        <source>The format of the phone number is incorrect!</source>
        <translation>手机号格式不正确！</translation>
    </message>
</context>
<context>
    <name>UserNameLoginWidget</name>
    <message>
        <source>Remember the password</source>
        <translation>记住密码</translation>
    </message>
    <message>
        <source>Show or hide the password</source>
        <translation>显示或隐藏密码</translation>
    </message>
    <message>
        <source>Phone number/email</source>
        <translation>手机号/邮箱</translation>
    </message>
    <message>
        <source>Password</source>
        <translation>密码</translation>
    </message>
</context>
<context>
    <name>tav::TransferDialog</name>
    <message>
        <source>Transfer</source>
        <translation>传输</translation>
    </message>
    <message>
        <source>Cancel</source>
        <translation>取消</translation>
    </message>
    <message>
        <source>%1 (%2 of %3)</source>
        <translation>%1（第 %2 个，共 %3 个）</translation>
    </message>
    <message>
        <source>Waiting for the platform...</source>
        <translation>正在等待平台...</translation>
    </message>
    <message>
        <source>%1 of %2</source>
        <translation>%1 / %2</translation>
    </message>
    <message>
        <source>About %1 s left</source>
        <translation>大约还需 %1 秒</translation>
    </message>
    <message>
        <source>About %1 min left</source>
        <translation>大约还需 %1 分钟</translation>
    </message>
    <message>
        <source>About %1 h left</source>
        <translation>大约还需 %1 小时</translation>
    </message>
</context>
<context>
    <name>tav::WaitingDialog</name>
    <message>
        <source>read data...</source>
        <translation>正在读取数据...</translation>
    </message>
    <message>
        <source>Waiting</source>
        <translation>请稍候</translation>
    </message>
</context>
</TS>
