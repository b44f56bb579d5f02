throw { toString: function () { throw 1; } };
