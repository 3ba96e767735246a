; The commands file: button remapping, defaults, commands and their keys.
[Remap]
x = y
y = x
z = q
q = x
x y

[Defaults]
command.time = 15
command.buffer.time = 1
command.time = fast
buffer.time = 1

[Command]
name = "QCF_x"
command = ~D, DF, F, x
time = 15

[Command]
name = "charge"
command = ~60$B, F, a+b
buffer.time = 2

[Command]
name = "mistakes"
command = /$D, /a, >~30F, $x, ab, DX, UD, x+q, , F
command =
name = unquoted
label = 1

[Statedef -1]

[State -1, Run]
type = ChangeState
value = 100
triggerall = command = "FF"
trigger1 = statetype = S && ctrl
