var p = new TokenProvider(); print(p.Load(arguments[0]), p.GetKeyCount()); var t = p.OpenKey(0); print(t.GetLabel(), t.VerifyPIN("1234", 0));
