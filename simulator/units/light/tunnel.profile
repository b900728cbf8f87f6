# Into a tunnel after half a minute and out of it a minute and a half later: seconds, lux.
0     3000
30    3000
31.5  150
34    40
40    25
112   25
117   60
119   400
120   3500
180   3500
