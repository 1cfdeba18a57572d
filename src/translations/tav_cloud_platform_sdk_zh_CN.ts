<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="zh_CN" sourcelanguage="en">
<context>
    <name>CloudAccountLogin</name>
    <message>
        <source>The phone number is registered</source>
        <translation>该手机号已注册</translation>
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
        <source>Prompt</source>
        <translation>提示</translation>
    </message>
    <message>
        <source>error</source>
        <translation>错误</translation>
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
        <source>Prompt</source>
        <translation>提示</translation>
    </message>
    <message>
        <source>error</source>
        <translation>错误</translation>
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
        <source>Prompt</source>
        <translation>提示</translation>
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
        <source>Prompt</source>
        <translation>提示</translation>
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
    <message>
        <source>Prompt</source>
        <translation>提示</translation>
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
    <name>WaitingDialog</name>
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
