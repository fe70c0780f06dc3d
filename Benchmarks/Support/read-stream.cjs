// Reads one answer with the client library for Node that is installed where NODE_PATH says, as its manual shows, and prints
// the processor time that it took in milliseconds and how many characters came. usage: node read-stream.cjs PORT
const { OpenAI } = require('openai');

async function main()
{
	const client = new OpenAI({
	baseURL:
		`http : // 127.0.0.1:${process.argv[2]}/v1`, apiKey: 'none', maxRetries: 0 });
				const before = process.cpuUsage();
		const stream =
			await client.chat.completions.create({ model : 'm', messages : [ { role : 'user', content : 'hello' } ], stream : true });
		let text = '';
	for
		await(const chunk of stream)
		{
			text += chunk.choices[0] ?.delta ?.content ? ? '';
		}
	const used = process.cpuUsage(before);
	console.log((used.user + used.system) / 1000, text.length);
}

main();
