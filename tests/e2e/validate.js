// node validate.js <the validator's folder> <files>: the errors of each glTF file, a line each.
const fs = require("fs");
const [folder, ...files] = process.argv.slice(2);
const validator = require(folder);
(async () => {
    for (const file of files) {
        const bytes = new Uint8Array(fs.readFileSync(file));
        const {issues} = await validator.validateBytes(bytes, {uri: file});
        for (const {severity, code, message, pointer} of issues.messages)
            if (severity === 0)
                console.log(`${file}: ${code} at ${pointer}: ${message}`);
    }
})();
