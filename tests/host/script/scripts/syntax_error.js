// The error is in line 4.
print("never shown");

var a = ;
